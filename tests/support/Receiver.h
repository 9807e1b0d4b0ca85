// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"
#include "support/Waiting.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <iosfwd>
#include <string>

namespace parlivo::desktop {

/// A program with all that it starts; killed when this is destroyed.
class ProcessGroup {
  public:
    ProcessGroup() = default;
    ~ProcessGroup();
    ProcessGroup(const ProcessGroup&) = delete;
    ProcessGroup& operator=(const ProcessGroup&) = delete;

    /// Throws Error if it cannot be started.
    void start(const QString& program, const QStringList& arguments);
    void signal(int number) const;

  private:
    QProcess process_;
};

/// A real application with a place for text, alone on the desktop or beside others.
///
/// Constructing one starts the program and returns when its text field has the keyboard focus; throws Error
/// when that does not happen. Destroying it kills the program.
class Receiver {
  public:
    enum class Kind { Xterm, Gtk3, Gtk4, Qt, Chromium };

    explicit Receiver(Kind kind);
    ~Receiver();
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    /// The text that the field holds, with '\n' as line end. The program tells it with a delay of up to 50
    /// ms.
    QString text() const;
    /// Waits until the field holds this text. False if that does not happen in time.
    bool waitForText(const QString& expected, std::chrono::milliseconds limit = defaultTimeout) const;

    /// Gives the window the focus again.
    void focus() const;
    /// Stops the program, so that it reads its events late, and continues it.
    void freeze() const;
    void thaw() const;

    xcb_window_t window() const { return window_; }

  private:
    xcb_window_t findWindow() const;
    bool isReady();

    QString title_;
    QTemporaryDir folder_;
    QString file_;
    x11::ConnectionHandle connection_;
    ProcessGroup process_;
    QElapsedTimer nudges_;
    xcb_window_t window_ = XCB_NONE;
};

/// Waits until the window with this title has the keyboard focus. False if that does not happen in time.
bool waitForActiveWindow(const QString& title);

/// For the names of parameterised tests, and for GoogleTest's messages.
std::string nameOf(Receiver::Kind kind);
void PrintTo(Receiver::Kind kind, std::ostream* stream);

}  // namespace parlivo::desktop
