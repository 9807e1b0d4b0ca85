// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyPresets.h"

#include <QString>

/// The hot key as the user reads it: every text that names it takes the name from here, sentences by
/// hotKeySentence. Main thread.
namespace parlivo {

/// The keys of a preset, as this system names them: "⌥ Spazio", "Alt+Spazio". A key whose name depends on the
/// user's layout bears what the layout prints on it now.
QString hotKeyTitle(const Preset& preset);

/// The keys that the settings choose.
QString hotKeyTitle();

}  // namespace parlivo
