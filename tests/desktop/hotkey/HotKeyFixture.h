// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/X11HotKeyService.h"
#include "support/Keyboard.h"
#include "support/PresetKeys.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>
#include <xcb/xproto.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace parlivo::desktop {

/// Fast enough that a short hold sees many repeats.
inline constexpr std::chrono::milliseconds repeatDelay{150};
inline constexpr std::chrono::milliseconds repeatInterval{15};
/// Long enough for some ten of them.
inline constexpr std::chrono::milliseconds longHold{300};

inline constexpr std::uint16_t numLock = XCB_MOD_MASK_2;
inline constexpr std::array<std::uint16_t, 4> allLocks{0, XCB_MOD_MASK_LOCK, numLock,
                                                       XCB_MOD_MASK_LOCK | numLock};

/// The hot-key service alone, with a real keyboard.
class HotKeyTest : public testing::Test {
  protected:
    HotKeyTest() {
        handler = service.installHandler([this] { ++presses; }, [this] { ++releases; },
                                         [this](auto refusal) { outcomes.push_back(refusal); });
        keyboard.setRepeat(repeatDelay, repeatInterval);
    }

    HotKeyService::Result attempt(const char* id) {
        const QString name = QString::fromLatin1(id);
        const Preset& preset = HotKeyManager::preset(name);
        return service.registerHotKey(preset.keyCode, preset.modifiers, {.signature = 1, .id = 1});
    }
    void take(const char* id) {
        registration.reset();
        auto result = attempt(id);
        ASSERT_TRUE(std::holds_alternative<std::unique_ptr<HotKeyRegistration>>(result)) << id;
        registration = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    }

    bool edges(int expectedPresses, int expectedReleases, std::chrono::milliseconds limit = defaultTimeout) {
        return waitFor([&] { return presses >= expectedPresses && releases >= expectedReleases; }, limit) &&
               presses == expectedPresses && releases == expectedReleases;
    }
    /// Taps Alt+Space until the service hears both edges of it.
    bool becomesHeard() {
        const auto tapped = [this] {
            keyboard.press(Key::leftAlt);
            keyboard.tap(Key::space);
            keyboard.release(Key::leftAlt);
            return releases > 0;
        };
        return waitFor(tapped) && waitFor([this] { return presses == releases; });
    }
    std::string seen() const {
        return std::to_string(presses) + " presses, " + std::to_string(releases) + " releases";
    }

    int presses = 0;
    int releases = 0;
    std::vector<std::optional<HotKeyRefusal>> outcomes;  ///< of the registration, as the keyboard changed
    Keyboard keyboard;
    X11HotKeyService service;
    std::unique_ptr<HotKeyHandler> handler;
    std::unique_ptr<HotKeyRegistration> registration;
};

}  // namespace parlivo::desktop
