// SPDX-License-Identifier: MIT
#include "platform/linux/sway/SwayBinding.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace parlivo::sway {

namespace {

/// sway counts positions as X does.
constexpr std::uint32_t codeOffset = 8;

struct Position {
    KeyCode key;
    std::uint32_t kernelCode;
};
constexpr std::array positions{Position{VirtualKey::space, KEY_SPACE},
                               Position{VirtualKey::grave, KEY_GRAVE}};

struct Modifier {
    HotKeyModifiers mask;
    const char* name;
};
constexpr std::array modifierNames{
    Modifier{HotKeyModifier::control, "Ctrl"},
    Modifier{HotKeyModifier::option, "Mod1"},
    Modifier{HotKeyModifier::shift, "Shift"},
    Modifier{HotKeyModifier::command, "Mod4"},
};

}  // namespace

QByteArray Binding::bindPress() const {
    return "bindcode --no-warn --no-repeat " + chord + " nop " + pressMark;
}
QByteArray Binding::bindRelease() const {
    return "bindcode --no-warn --release " + chord + " nop " + releaseMark;
}
QByteArray Binding::unbindPress() const {
    return "unbindcode " + chord;
}
QByteArray Binding::unbindRelease() const {
    return "unbindcode --release " + chord;
}

std::optional<Binding> bindingOf(KeyCode key, HotKeyModifiers modifiers) {
    const auto position = std::ranges::find(positions, key, &Position::key);
    if (position == positions.end()) return std::nullopt;
    QByteArray chord;
    for (const auto& [mask, name] : modifierNames) {
        if ((modifiers & mask) != 0) chord += QByteArray(name) + '+';
    }
    return Binding{chord + QByteArray::number(position->kernelCode + codeOffset)};
}

}  // namespace parlivo::sway
