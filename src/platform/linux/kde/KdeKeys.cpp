// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KdeKeys.h"

#include <QtCore/qnamespace.h>

#include <algorithm>
#include <array>

namespace parlivo::kde {

namespace {

struct Name {
    KeyCode key;
    Qt::Key name;
};
constexpr std::array names{Name{VirtualKey::space, Qt::Key_Space},
                           Name{VirtualKey::grave, Qt::Key_QuoteLeft}};

struct Modifier {
    HotKeyModifiers mask;
    Qt::KeyboardModifier name;
};
constexpr std::array modifierNames{
    Modifier{HotKeyModifier::control, Qt::ControlModifier},
    Modifier{HotKeyModifier::option, Qt::AltModifier},
    Modifier{HotKeyModifier::shift, Qt::ShiftModifier},
    Modifier{HotKeyModifier::command, Qt::MetaModifier},
};

}  // namespace

std::optional<int> combinationOf(KeyCode key, HotKeyModifiers modifiers) {
    const auto found = std::ranges::find(names, key, &Name::key);
    if (found == names.end()) return std::nullopt;
    unsigned combination = found->name;
    for (const auto& [mask, name] : modifierNames) {
        if ((modifiers & mask) != 0) combination |= static_cast<unsigned>(name);
    }
    return static_cast<int>(combination);
}

}  // namespace parlivo::kde
