// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/KeyPositions.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace parlivo::KeyPositions {

namespace {

struct Position {
    KeyCode key;
    std::uint32_t kernelCode;
};

/// macOS's virtual key codes name positions, as the kernel's codes do.
constexpr std::array positions{
    Position{0x00, KEY_A},          Position{0x01, KEY_S},          Position{0x02, KEY_D},
    Position{0x03, KEY_F},          Position{0x04, KEY_H},          Position{0x05, KEY_G},
    Position{0x06, KEY_Z},          Position{0x07, KEY_X},          Position{0x08, KEY_C},
    Position{0x09, KEY_V},          Position{0x0A, KEY_102ND},      Position{0x0B, KEY_B},
    Position{0x0C, KEY_Q},          Position{0x0D, KEY_W},          Position{0x0E, KEY_E},
    Position{0x0F, KEY_R},          Position{0x10, KEY_Y},          Position{0x11, KEY_T},
    Position{0x12, KEY_1},          Position{0x13, KEY_2},          Position{0x14, KEY_3},
    Position{0x15, KEY_4},          Position{0x16, KEY_6},          Position{0x17, KEY_5},
    Position{0x18, KEY_EQUAL},      Position{0x19, KEY_9},          Position{0x1A, KEY_7},
    Position{0x1B, KEY_MINUS},      Position{0x1C, KEY_8},          Position{0x1D, KEY_0},
    Position{0x1E, KEY_RIGHTBRACE}, Position{0x1F, KEY_O},          Position{0x20, KEY_U},
    Position{0x21, KEY_LEFTBRACE},  Position{0x22, KEY_I},          Position{0x23, KEY_P},
    Position{0x24, KEY_ENTER},      Position{0x25, KEY_L},          Position{0x26, KEY_J},
    Position{0x27, KEY_APOSTROPHE}, Position{0x28, KEY_K},          Position{0x29, KEY_SEMICOLON},
    Position{0x2A, KEY_BACKSLASH},  Position{0x2B, KEY_COMMA},      Position{0x2C, KEY_SLASH},
    Position{0x2D, KEY_N},          Position{0x2E, KEY_M},          Position{0x2F, KEY_DOT},
    Position{0x30, KEY_TAB},        Position{0x31, KEY_SPACE},      Position{0x32, KEY_GRAVE},
    Position{0x33, KEY_BACKSPACE},  Position{0x35, KEY_ESC},        Position{0x40, KEY_F17},
    Position{0x41, KEY_KPDOT},      Position{0x43, KEY_KPASTERISK}, Position{0x45, KEY_KPPLUS},
    Position{0x48, KEY_VOLUMEUP},   Position{0x49, KEY_VOLUMEDOWN}, Position{0x4A, KEY_MUTE},
    Position{0x4B, KEY_KPSLASH},    Position{0x4C, KEY_KPENTER},    Position{0x4E, KEY_KPMINUS},
    Position{0x4F, KEY_F18},        Position{0x50, KEY_F19},        Position{0x51, KEY_KPEQUAL},
    Position{0x52, KEY_KP0},        Position{0x53, KEY_KP1},        Position{0x54, KEY_KP2},
    Position{0x55, KEY_KP3},        Position{0x56, KEY_KP4},        Position{0x57, KEY_KP5},
    Position{0x58, KEY_KP6},        Position{0x59, KEY_KP7},        Position{0x5A, KEY_F20},
    Position{0x5B, KEY_KP8},        Position{0x5C, KEY_KP9},        Position{0x5D, KEY_YEN},
    Position{0x5E, KEY_RO},         Position{0x5F, KEY_KPCOMMA},    Position{0x60, KEY_F5},
    Position{0x61, KEY_F6},         Position{0x62, KEY_F7},         Position{0x63, KEY_F3},
    Position{0x64, KEY_F8},         Position{0x65, KEY_F9},         Position{0x67, KEY_F11},
    Position{0x69, KEY_F13},        Position{0x6A, KEY_F16},        Position{0x6B, KEY_F14},
    Position{0x6D, KEY_F10},        Position{0x6E, KEY_COMPOSE},    Position{0x6F, KEY_F12},
    Position{0x71, KEY_F15},        Position{0x72, KEY_INSERT},     Position{0x73, KEY_HOME},
    Position{0x74, KEY_PAGEUP},     Position{0x75, KEY_DELETE},     Position{0x76, KEY_F4},
    Position{0x77, KEY_END},        Position{0x78, KEY_F2},         Position{0x79, KEY_PAGEDOWN},
    Position{0x7A, KEY_F1},         Position{0x7B, KEY_LEFT},       Position{0x7C, KEY_RIGHT},
    Position{0x7D, KEY_DOWN},       Position{0x7E, KEY_UP},
};

/// They do something by being held or by having been pressed.
constexpr std::array<std::uint32_t, 11> modifiersAndLocks{
    KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTALT,   KEY_RIGHTALT,
    KEY_LEFTMETA, KEY_RIGHTMETA, KEY_CAPSLOCK,  KEY_NUMLOCK,    KEY_SCROLLLOCK};

/// The last code that a key of X can have, whose codes end at 255.
constexpr std::uint32_t lastCode = 255 - displayOffset;

}  // namespace

std::optional<std::uint32_t> kernelCodeOf(KeyCode key) {
    if (key >= VirtualKey::firstKernelCode) {
        const auto code = key - VirtualKey::firstKernelCode;
        return keyCodeOf(code) == key ? std::optional(code) : std::nullopt;
    }
    const auto* const found = std::ranges::find(positions, key, &Position::key);
    return found == positions.end() ? std::nullopt : std::optional(found->kernelCode);
}

std::optional<KeyCode> keyCodeOf(std::uint32_t kernelCode) {
    if (kernelCode == KEY_RESERVED || kernelCode > lastCode) return std::nullopt;
    if (std::ranges::find(modifiersAndLocks, kernelCode) != modifiersAndLocks.end()) return std::nullopt;
    const auto* const found = std::ranges::find(positions, kernelCode, &Position::kernelCode);
    return found == positions.end() ? VirtualKey::firstKernelCode + kernelCode : found->key;
}

std::optional<KeyCode> keyCodeOfDisplays(std::uint32_t displayCode) {
    return displayCode < displayOffset ? std::nullopt : keyCodeOf(displayCode - displayOffset);
}

}  // namespace parlivo::KeyPositions
