// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyManager.h"
#include "support/PlatformTest.h"

#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

class HotKeyManagerTest : public PlatformTest {
  protected:
    HotKeyManagerTest() {
        manager->onKeyDown = [this] { ++downs; };
        manager->onKeyUp = [this] { ++ups; };
        manager->onOutcome = [this](const auto& refusal) { outcomes.push_back(refusal); };
    }

    void choose(const char* preset) { store(Settings::hotkeyPreset, QString::fromLatin1(preset)); }
    fake::HotKeys& keys() { return platform.hotKeys(); }

    std::unique_ptr<HotKeyManager> manager = std::make_unique<HotKeyManager>();
    int downs = 0;
    int ups = 0;
    using Outcomes = std::vector<std::optional<HotKeyRefusal>>;
    Outcomes outcomes;
};

}  // namespace parlivo
