// SPDX-License-Identifier: MIT
#pragma once

#include "support/Receiver.h"

#include <QString>
#include <QTemporaryDir>

#include <csignal>
#include <functional>
#include <iosfwd>
#include <string>

namespace parlivo::desktop {

/// A real application with a place for text, as a window of the Wayland compositor. Constructing one starts
/// the program and returns when its text field has the keyboard focus; throws Error when that does not
/// happen.
class WaylandReceiver {
  public:
    enum class Kind {
        Foot,         ///< without an echo: its cursor stands still
        EchoingFoot,  ///< as a shell leaves it
        Gtk3,
        Gtk4,
        Qt,
        Chromium,      ///< as it starts by itself: text comes by keys and by paste
        ChromiumText,  ///< told to take text from an input method
    };

    /// `tapShift` presses and releases Shift, which a browser has to hear first; without it that is done by a
    /// keyboard of the compositor's protocols.
    explicit WaylandReceiver(Kind kind, std::function<void()> tapShift = {});
    WaylandReceiver(const WaylandReceiver&) = delete;
    WaylandReceiver& operator=(const WaylandReceiver&) = delete;

    const QString& title() const { return title_; }
    /// The text that the field holds, with '\n' as line end; told with a delay of up to 50 ms.
    QString text() const;
    bool waitForText(const QString& expected) const;

    void focus() const;
    /// Whether its window is there: the compositor may have thrown it out.
    bool isShown() const;
    void freeze() const { process_.signal(SIGSTOP); }
    void thaw() const { process_.signal(SIGCONT); }

  private:
    QString title_;
    QTemporaryDir folder_;
    QString file_;
    ProcessGroup process_;
};

std::string nameOf(WaylandReceiver::Kind kind);
void PrintTo(WaylandReceiver::Kind kind, std::ostream* stream);

}  // namespace parlivo::desktop
