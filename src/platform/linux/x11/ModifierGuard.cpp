// SPDX-License-Identifier: MIT
#include "platform/linux/x11/ModifierGuard.h"

#include "support/Clock.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>

namespace parlivo::x11 {

namespace {

using namespace std::chrono_literals;

constexpr auto timeout = 1000ms;
constexpr auto pollInterval = 5ms;

bool anyPressed(const X11Keyboard::PressedKeys& keys) {
    return std::ranges::any_of(keys, [](std::uint8_t bits) { return bits != 0; });
}

bool isPressed(const X11Keyboard::PressedKeys& keys, std::size_t code) {
    return (keys.at(code / 8) >> (code % 8) & 1) != 0;
}

void release(X11Keyboard& keyboard, const X11Keyboard::PressedKeys& keys) {
    for (std::size_t code = 0; code < 8 * keys.size(); ++code) {
        if (isPressed(keys, code)) {
            keyboard.press(static_cast<xcb_keycode_t>(code), X11Keyboard::Press::Up);
        }
    }
}

}  // namespace

ModifierGuard::ModifierGuard(X11Keyboard& keyboard) : keyboard_(keyboard) {
    waitForHeldKeys();
    const auto map = keyboard_.map();
    if (!map) return;
    const auto unwanted = static_cast<Modifiers>(~map->modifiersOf(XKB_KEY_Num_Lock));
    const auto state = keyboard_.state();
    takenOff_ = state.locked & unwanted;
    if (takenOff_ != 0 || state.latched != 0) keyboard_.lockModifiers(takenOff_, 0);
}

ModifierGuard::~ModifierGuard() {
    if (takenOff_ != 0) keyboard_.lockModifiers(takenOff_, takenOff_);
    keyboard_.sync();
}

void ModifierGuard::waitForHeldKeys() {
    auto held = keyboard_.pressedKeys();
    if (!anyPressed(held)) return;
    const Clock::Deadline deadline(timeout);
    while (anyPressed(held) && !deadline.passed() && Clock::sleepFor(pollInterval))
        held = keyboard_.pressedKeys();
    if (!Clock::interrupted()) release(keyboard_, held);
}

}  // namespace parlivo::x11
