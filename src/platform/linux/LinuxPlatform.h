#pragma once

#include "platform/Platform.h"
#include "platform/linux/LinuxPermissions.h"
#include "platform/linux/base/JsonUserDefaults.h"
#include "platform/linux/base/LinuxBundle.h"
#include "platform/linux/base/LinuxBundleTools.h"
#include "platform/linux/base/LinuxSystemVersion.h"
#include "platform/linux/base/Syslog.h"
#include "platform/linux/base/TerminationSignals.h"
#include "platform/linux/base/XdgDirectories.h"
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/linux/desktop/LinuxStatusItemHost.h"
#include "platform/linux/desktop/X11Screens.h"
#include "platform/linux/session/BusRemoteControl.h"
#include "platform/linux/session/XdgLoginItem.h"
#include "platform/linux/sound/PulseAudioInput.h"
#include "platform/linux/sound/PulseSounds.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "platform/linux/x11/QtPasteboard.h"
#include "platform/linux/x11/X11HotKeyService.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"

#include <memory>
#include <mutex>

namespace parlivo {

/// Linux with an X11 desktop and a PulseAudio or PipeWire sound server. Each adapter is made when it is first
/// asked for: a second start that only passes its command line on touches neither sound nor screen.
class LinuxPlatform : public Platform {
  public:
    LinuxPlatform();

    AudioInput& audioInput() override { return made(audioInput_); }
    Bundle& bundle() override { return bundle_; }
    BundleTools& bundleTools() override { return bundleTools_; }
    Directories& directories() override { return directories_; }
    HotKeyService& hotKeys() override { return made(hotKeys_); }
    KeyboardSynthesizer& keyboard() override { return made(keyboard_); }
    LoginItem& loginItem() override { return loginItem_; }
    Pasteboard& pasteboard() override { return made(pasteboard_); }
    Permissions& permissions() override { return permissions_; }
    RemoteControl& remoteControl() override { return made(remoteControl_); }
    Screens& screens() override { return screens_; }
    Sounds& sounds() override;
    StatusItemHost& statusItems() override { return statusItems_; }
    SystemLog& systemLog() override { return systemLog_; }
    SystemVersion& systemVersion() override { return systemVersion_; }
    UserDefaults& userDefaults() override { return userDefaults_; }
    WavConverter& wavConverter() override { return wavConverter_; }
    Workspace& workspace() override { return workspace_; }

    std::optional<QString> startProblem() override;
    std::function<void()> childSetup() override;
    void onTerminationRequest(std::function<void()> requested) override;

  private:
    /// Any thread may be the first to ask.
    template <typename Adapter>
    Adapter& made(std::unique_ptr<Adapter>& slot) {
        const std::lock_guard lock(mutex_);
        if (!slot) slot = std::make_unique<Adapter>();
        return *slot;
    }

    std::mutex mutex_;  // over the slots
    Syslog systemLog_;
    LinuxBundle bundle_;
    LinuxBundleTools bundleTools_;
    XdgDirectories directories_;
    JsonUserDefaults userDefaults_;
    LinuxPermissions permissions_;
    LinuxSystemVersion systemVersion_;
    XdgLoginItem loginItem_{bundle_.location() + QStringLiteral("/Contents/MacOS/Parlivo")};
    X11Screens screens_;
    LinuxStatusItemHost statusItems_;
    DesktopWorkspace workspace_{bundle_, systemLog_};
    SndfileWavConverter wavConverter_;
    std::unique_ptr<PulseAudioInput> audioInput_;
    std::unique_ptr<PulseSounds> sounds_;
    std::unique_ptr<X11HotKeyService> hotKeys_;
    std::unique_ptr<X11KeyboardSynthesizer> keyboard_;
    std::unique_ptr<QtPasteboard> pasteboard_;
    std::unique_ptr<BusRemoteControl> remoteControl_;
    std::unique_ptr<TerminationSignals> signals_;
};

}  // namespace parlivo
