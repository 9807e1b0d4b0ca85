// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyPresets.h"
#include "settings/Settings.h"

#include <QString>

#include <cstdint>

/// A combination of the user's own, beside the presets, where the system lets him choose any. Main thread.
namespace parlivo::HotKeyChoice {

/// What `hotkeyPreset` stores for it.
QString ownId();

/// The combination that the settings choose: a preset, or the user's own one. What cannot be used counts as
/// the first preset.
Preset current();

/// Whether a combination may be a hot key: it takes no key from typing.
bool isAllowed(KeyCode key, HotKeyModifiers modifiers);

/// Whether the settings hold one that can be used, chosen or not.
bool hasOwn();
/// Makes it the chosen one, without announcing it.
void store(KeyCode key, HotKeyModifiers modifiers);

/// What the hot key does: what the settings choose, or to start and stop by presses where the system tells of
/// nothing else.
DictationMode modeInForce();

/// "Ctrl+Alt+F9", with what the layout prints on the key.
QString titleOf(KeyCode key, HotKeyModifiers modifiers);

}  // namespace parlivo::HotKeyChoice
