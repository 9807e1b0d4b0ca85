// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/QtPasteboard.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"
#include "settings/Log.h"
#include "support/FakePlatform.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace parlivo::desktop {

/// The real keyboard and clipboard of the display, and fakes for all else.
class TypingPlatform : public Platform {
  public:
    AudioInput& audioInput() override { return others_.audioInput(); }
    Bundle& bundle() override { return others_.bundle(); }
    BundleTools& bundleTools() override { return others_.bundleTools(); }
    Directories& directories() override { return others_.directories(); }
    FloatingPanels& floatingPanels() override { return others_.floatingPanels(); }
    HotKeyService& hotKeys() override { return others_.hotKeys(); }
    KeyboardSynthesizer& keyboard() override { return keyboard_; }
    LoginItem& loginItem() override { return others_.loginItem(); }
    Pasteboard& pasteboard() override { return pasteboard_; }
    Permissions& permissions() override { return others_.permissions(); }
    RemoteControl& remoteControl() override { return others_.remoteControl(); }
    Sounds& sounds() override { return others_.sounds(); }
    StatusItemHost& statusItems() override { return others_.statusItems(); }
    SystemLog& systemLog() override { return others_.systemLog(); }
    SystemVersion& systemVersion() override { return others_.systemVersion(); }
    UserDefaults& userDefaults() override { return others_.userDefaults(); }
    WavConverter& wavConverter() override { return others_.wavConverter(); }
    Workspace& workspace() override { return others_.workspace(); }
    std::optional<QString> startProblem() override { return others_.startProblem(); }
    QString desktopSummary() override { return others_.desktopSummary(); }
    QProcessEnvironment childEnvironment() override { return others_.childEnvironment(); }
    std::function<void()> childSetup() override { return others_.childSetup(); }
    void onTerminationRequest(std::function<void()> job) override {
        others_.onTerminationRequest(std::move(job));
    }

  private:
    FakePlatform others_;
    X11KeyboardSynthesizer keyboard_;
    QtPasteboard pasteboard_;
};

/// Installs a TypingPlatform as long as this object exists, like a program that types.
class TypingProgram {
  public:
    TypingProgram() { Platform::install(std::make_unique<TypingPlatform>()); }
    ~TypingProgram() {
        // The log's thread asks the platform where the file is.
        Log::flush();
        Platform::install(nullptr);
    }
    TypingProgram(const TypingProgram&) = delete;
    TypingProgram& operator=(const TypingProgram&) = delete;
};

}  // namespace parlivo::desktop
