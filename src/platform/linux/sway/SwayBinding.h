// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QByteArray>

#include <optional>

namespace parlivo::sway {

/// What the bound commands carry, so that the events of our bindings are told from others.
inline constexpr const char* pressMark = "parlivo-press";
inline constexpr const char* releaseMark = "parlivo-release";

/// A hot key as sway is told to bind it (sway(5), bindcode): by position, once for each edge. The commands do
/// nothing; sway tells of each run of them.
struct Binding {
    QByteArray chord;  ///< such as "Mod1+65"

    QByteArray bindPress() const;
    QByteArray bindRelease() const;
    QByteArray unbindPress() const;
    QByteArray unbindRelease() const;
};

/// sway counts positions as X does. nullopt if no keyboard has the key.
std::optional<Binding> bindingOf(KeyCode key, HotKeyModifiers modifiers);

}  // namespace parlivo::sway
