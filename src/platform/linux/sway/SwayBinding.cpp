// SPDX-License-Identifier: MIT
#include "platform/linux/sway/SwayBinding.h"

#include "platform/linux/desktop/KeyPositions.h"

#include <array>

namespace parlivo::sway {

namespace {

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
    const auto position = KeyPositions::kernelCodeOf(key);
    if (!position) return std::nullopt;
    QByteArray chord;
    for (const auto& [mask, name] : modifierNames) {
        if ((modifiers & mask) != 0) chord += QByteArray(name) + '+';
    }
    return Binding{chord + QByteArray::number(*position + KeyPositions::displayOffset)};
}

}  // namespace parlivo::sway
