// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/HotKeyService.h"
#include "platform/KeyboardSynthesizer.h"
#include "platform/Pasteboard.h"
#include "platform/SessionHint.h"
#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/TrayWatch.h"

#include <QRect>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

/// Everything that depends on the kind of graphical session. There is one implementation for each kind, in a
/// folder of its own; `makeDesktop` chooses among them when the program starts.
class Desktop {
  public:
    virtual ~Desktop() = default;

    // Any thread may be the first to ask.
    virtual HotKeyService& hotKeys() = 0;
    virtual KeyboardSynthesizer& keyboard() = 0;
    virtual Pasteboard& pasteboard() = 0;
    virtual FloatingPanels& floatingPanels() = 0;

    /// Watches for trays that are not on the session bus. Null where there can be none. Main thread.
    virtual std::unique_ptr<TrayWatch> watchTray(std::function<void()> changed) = 0;
    /// In which colour something can be read at this place of the screen, now. Main thread.
    virtual StatusItemPlace::Foreground foregroundAt(const QRect& place) = 0;

    /// Whether text can be put into the focused window. Any thread; a few milliseconds.
    virtual bool canDeliverText() = 0;
    /// Why no window can be shown, in Italian; nullopt if they can.
    virtual std::optional<QString> startProblem() = 0;
    /// The ways that were chosen for hot key, text and overlay, in one line of Italian, for the log.
    virtual QString summary() = 0;
    /// The same for the settings window, in a session where it is not a matter of course what works.
    virtual std::optional<QString> sessionNote() { return std::nullopt; }
    /// As Platform::sessionHints.
    virtual std::vector<SessionHint> sessionHints() { return {}; }
};

}  // namespace parlivo
