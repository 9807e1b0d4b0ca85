// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "platform/Bundle.h"
#include "platform/BundleTools.h"
#include "platform/Directories.h"
#include "platform/FloatingPanel.h"
#include "platform/HotKeyService.h"
#include "platform/KeyboardSynthesizer.h"
#include "platform/LoginItem.h"
#include "platform/Notifications.h"
#include "platform/Pasteboard.h"
#include "platform/Permissions.h"
#include "platform/RemoteControl.h"
#include "platform/SessionHint.h"
#include "platform/Sounds.h"
#include "platform/StatusItemHost.h"
#include "platform/SystemLog.h"
#include "platform/SystemVersion.h"
#include "platform/UserDefaults.h"
#include "platform/WavConverter.h"
#include "platform/Workspace.h"

#include <QProcessEnvironment>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

/// The system that the program runs on: gives one adapter for each facility. Adapters live as long as the
/// platform.
class Platform {
  public:
    virtual ~Platform() = default;

    virtual AudioInput& audioInput() = 0;
    virtual Bundle& bundle() = 0;
    virtual BundleTools& bundleTools() = 0;
    virtual Directories& directories() = 0;
    virtual FloatingPanels& floatingPanels() = 0;
    virtual HotKeyService& hotKeys() = 0;
    virtual KeyboardSynthesizer& keyboard() = 0;
    virtual LoginItem& loginItem() = 0;
    virtual Notifications& notifications() = 0;
    virtual Pasteboard& pasteboard() = 0;
    virtual Permissions& permissions() = 0;
    virtual RemoteControl& remoteControl() = 0;
    virtual Sounds& sounds() = 0;
    virtual StatusItemHost& statusItems() = 0;
    virtual SystemLog& systemLog() = 0;
    virtual SystemVersion& systemVersion() = 0;
    virtual UserDefaults& userDefaults() = 0;
    virtual WavConverter& wavConverter() = 0;
    virtual Workspace& workspace() = 0;

    /// Why the program cannot start on this system as it stands (no display to show itself on), in Italian.
    /// Asked before anything is shown.
    virtual std::optional<QString> startProblem() = 0;
    /// The ways in which hot key, text and overlay work in this session, in one line of Italian.
    virtual QString desktopSummary() = 0;
    /// The same for the settings window; nullopt where it goes without saying what works.
    virtual std::optional<QString> sessionNote() { return std::nullopt; }
    /// What the user should know of this session, or has to do once; empty where all works. What was done is
    /// gone at the next question, which may come once a second. Main thread.
    virtual std::vector<SessionHint> sessionHints() { return {}; }
    /// What a child process does between fork and exec (ChildProcess::setChildSetup).
    virtual std::function<void()> childSetup() = 0;
    /// The environment of the programs that this one starts: the one it was started with, without the
    /// variables that it set for itself.
    virtual QProcessEnvironment childEnvironment() = 0;
    /// `requested` is called on the main thread when the system asks the program to end. After the
    /// application object exists, once.
    virtual void onTerminationRequest(std::function<void()> requested) = 0;
    /// Where the program can lose its display server: `last` is called then, on any thread, and the process
    /// ends at once, with nothing destroyed. After the application object exists, once.
    virtual void onDisplayLoss(std::function<void()> last) = 0;

    /// The one in force. Installed by main before anything else runs; a test installs a fake and removes it
    /// at its end.
    static Platform& current();
    static void install(std::unique_ptr<Platform> platform);
};

}  // namespace parlivo
