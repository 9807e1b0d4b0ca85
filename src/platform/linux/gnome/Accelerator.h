// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QString>

#include <optional>

/// Key combinations as GNOME's settings spell them ("<Control><Alt>space").
/// https://docs.gtk.org/gtk4/func.accelerator_parse.html; a key may also be a position of X's ("0x31").
namespace parlivo::gnome {

/// Keys that print nothing by their name, all others by their position. nullopt if no PC keyboard has the
/// key.
std::optional<QString> acceleratorOf(KeyCode key, HotKeyModifiers modifiers);

/// Whether a setting's accelerator means this combination. What a layout prints on a key counts as on an
/// American keyboard.
bool isAccelerator(const QString& accelerator, KeyCode key, HotKeyModifiers modifiers);

/// The same as the portals spell it ("CTRL+ALT+space"), all keys by what an American keyboard prints on them.
/// https://specifications.freedesktop.org/shortcuts-spec/latest/
std::optional<QString> triggerOf(KeyCode key, HotKeyModifiers modifiers);

}  // namespace parlivo::gnome
