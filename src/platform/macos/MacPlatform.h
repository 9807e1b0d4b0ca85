// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Platform.h"
#include "platform/macos/base/MacBundle.h"
#include "platform/macos/base/MacBundleTools.h"
#include "platform/macos/base/MacDirectories.h"
#include "platform/macos/base/MacSystemVersion.h"
#include "platform/macos/base/MacUserDefaults.h"
#include "platform/macos/base/OsLog.h"
#include "platform/macos/desktop/MacFloatingPanels.h"
#include "platform/macos/desktop/MacScreens.h"
#include "platform/macos/desktop/MacStatusItemHost.h"
#include "platform/macos/input/CarbonHotKeyService.h"
#include "platform/macos/input/MacPasteboard.h"
#include "platform/macos/input/QuartzKeyboardSynthesizer.h"
#include "platform/macos/session/MacLoginItem.h"
#include "platform/macos/session/MacPermissions.h"
#include "platform/macos/session/MacWorkspace.h"
#include "platform/macos/session/SocketRemoteControl.h"
#include "platform/macos/sound/AfconvertWavConverter.h"
#include "platform/macos/sound/EngineAudioInput.h"
#include "platform/macos/sound/MacSounds.h"

#include <memory>

namespace parlivo {

class TerminationEvents;

/// macOS 13 and later. None of the adapters takes anything of the system before it is used.
class MacPlatform : public Platform {
  public:
    MacPlatform();
    ~MacPlatform() override;
    MacPlatform(const MacPlatform&) = delete;
    MacPlatform& operator=(const MacPlatform&) = delete;

    AudioInput& audioInput() override { return audioInput_; }
    Bundle& bundle() override { return bundle_; }
    BundleTools& bundleTools() override { return bundleTools_; }
    Directories& directories() override { return directories_; }
    FloatingPanels& floatingPanels() override { return floatingPanels_; }
    HotKeyService& hotKeys() override { return hotKeys_; }
    KeyboardSynthesizer& keyboard() override { return keyboard_; }
    LoginItem& loginItem() override { return loginItem_; }
    Notifications& notifications() override { return notifications_; }
    Pasteboard& pasteboard() override { return pasteboard_; }
    Permissions& permissions() override { return permissions_; }
    RemoteControl& remoteControl() override { return remoteControl_; }
    Sounds& sounds() override { return sounds_; }
    StatusItemHost& statusItems() override { return statusItems_; }
    SystemLog& systemLog() override { return systemLog_; }
    SystemVersion& systemVersion() override { return systemVersion_; }
    UserDefaults& userDefaults() override { return userDefaults_; }
    WavConverter& wavConverter() override { return wavConverter_; }
    Workspace& workspace() override { return workspace_; }

    std::optional<QString> startProblem() override { return std::nullopt; }
    QString desktopSummary() override;
    std::function<void()> childSetup() override;
    QProcessEnvironment childEnvironment() override;
    void onTerminationRequest(std::function<void()> requested) override;
    /// The window server's end is that of the session, and ends every program by a signal.
    void onDisplayLoss(std::function<void()>) override {}

  private:
    OsLog systemLog_;
    MacBundle bundle_;
    MacBundleTools bundleTools_;
    MacDirectories directories_;
    MacUserDefaults userDefaults_;
    MacSystemVersion systemVersion_;
    MacLoginItem loginItem_;
    MacPermissions permissions_;
    MacScreens screens_;
    MacFloatingPanels floatingPanels_{screens_};
    MacStatusItemHost statusItems_;
    MacWorkspace workspace_;
    MacSounds sounds_;
    EngineAudioInput audioInput_;
    AfconvertWavConverter wavConverter_;
    CarbonHotKeyService hotKeys_;
    QuartzKeyboardSynthesizer keyboard_;
    MacPasteboard pasteboard_;
    // Errors stand in the menu's first line, which macOS always shows; a notification would ask for a
    // permission.
    NoNotifications notifications_;
    SocketRemoteControl remoteControl_{directories_.applicationSupport() + QStringLiteral("/Parlivo")};
    std::unique_ptr<TerminationEvents> terminationEvents_;
};

}  // namespace parlivo
