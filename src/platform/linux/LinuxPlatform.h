// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "platform/linux/LinuxPermissions.h"
#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/base/JsonUserDefaults.h"
#include "platform/linux/base/LinuxBundle.h"
#include "platform/linux/base/LinuxBundleTools.h"
#include "platform/linux/base/LinuxSystemVersion.h"
#include "platform/linux/base/OnDemand.h"
#include "platform/linux/base/Syslog.h"
#include "platform/linux/base/TerminationSignals.h"
#include "platform/linux/base/XdgDirectories.h"
#include "platform/linux/desktop/Desktop.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/linux/desktop/LinuxStatusItemHost.h"
#include "platform/linux/session/BusNotifications.h"
#include "platform/linux/session/BusRemoteControl.h"
#include "platform/linux/session/DisplayLoss.h"
#include "platform/linux/session/XdgLoginItem.h"
#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseMicrophone.h"
#include "platform/linux/sound/PulseSounds.h"
#include "platform/linux/sound/SndfileWavConverter.h"

#include <memory>
#include <mutex>

namespace parlivo {

/// Linux with a PulseAudio or PipeWire sound server, and with the desktop that `makeDesktop` finds. The
/// desktop, sound and bus adapters are made when they are first asked for: a second start that only passes
/// its command line on touches neither sound nor screen.
class LinuxPlatform : public Platform {
  public:
    LinuxPlatform();

    AudioInput& audioInput() override { return audioInput_.get(microphone_); }
    Bundle& bundle() override { return bundle_; }
    BundleTools& bundleTools() override { return bundleTools_; }
    Directories& directories() override { return directories_; }
    FloatingPanels& floatingPanels() override { return desktop().floatingPanels(); }
    HotKeyService& hotKeys() override { return desktop().hotKeys(); }
    KeyboardSynthesizer& keyboard() override { return desktop().keyboard(); }
    LoginItem& loginItem() override { return loginItem_; }
    Notifications& notifications() override { return notifications_.get(bundle_); }
    Pasteboard& pasteboard() override { return desktop().pasteboard(); }
    Permissions& permissions() override { return permissions_.get(desktop(), microphone_); }
    RemoteControl& remoteControl() override { return remoteControl_.get(); }
    Sounds& sounds() override { return sounds_.get(bundle_); }
    StatusItemHost& statusItems() override { return statusItems_.get(desktop()); }
    SystemLog& systemLog() override { return systemLog_; }
    SystemVersion& systemVersion() override { return systemVersion_; }
    UserDefaults& userDefaults() override { return userDefaults_; }
    WavConverter& wavConverter() override { return wavConverter_; }
    Workspace& workspace() override { return workspace_; }

    std::optional<QString> startProblem() override { return desktop().startProblem(); }
    QString desktopSummary() override { return desktop().summary(); }
    std::optional<QString> sessionNote() override { return desktop().sessionNote(); }
    std::vector<SessionHint> sessionHints() override { return desktop().sessionHints(); }
    std::function<void()> childSetup() override;
    QProcessEnvironment childEnvironment() override;
    void onTerminationRequest(std::function<void()> requested) override;
    void onDisplayLoss(std::function<void()> last) override;

  private:
    /// Any thread.
    Desktop& desktop();

    Syslog systemLog_;
    LinuxBundle bundle_;
    LinuxBundleTools bundleTools_;
    XdgDirectories directories_;
    JsonUserDefaults userDefaults_;
    LinuxSystemVersion systemVersion_;
    XdgLoginItem loginItem_{bundle_.location() + QStringLiteral("/Contents/MacOS/Parlivo")};
    DesktopWorkspace workspace_{bundle_, systemLog_, inheritedEnvironment()};
    SndfileWavConverter wavConverter_;
    PulseMicrophone microphone_;
    OnDemand<PulseAudioInput> audioInput_;
    OnDemand<PulseSounds> sounds_;
    OnDemand<BusRemoteControl> remoteControl_;
    OnDemand<BusNotifications> notifications_;
    std::unique_ptr<TerminationSignals> signals_;
    std::unique_ptr<DisplayLoss> displayLoss_;
    std::once_flag desktopChosen_;
    std::unique_ptr<Desktop> desktop_;
    OnDemand<LinuxPermissions> permissions_;     // uses the desktop
    OnDemand<LinuxStatusItemHost> statusItems_;  // uses the desktop
};

}  // namespace parlivo
