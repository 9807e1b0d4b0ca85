// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyPresets.h"

#include <QString>

/// The hot key as the user reads it: every text that names it takes the name from here. Main thread.
namespace parlivo {

/// The keys of a preset, as this system names them: "⌥ Spazio", "Alt+Spazio". A key whose name depends on the
/// user's layout bears what the layout prints on it now.
QString hotKeyTitle(const Preset& preset);

/// The keys that the settings choose.
QString hotKeyTitle();

/// `text` with the chosen keys in the place of its "%1". The texts of macOS have none: they name ⌥Spazio,
/// whatever is chosen.
QString withHotKeyTitle(QString text);

/// One sentence on the hot key, for each kind of system.
struct HotKeySentence {
    QString held;     ///< where it is held while the user speaks
    QString pressed;  ///< where the system tells of presses only
    QString none;     ///< where the system has no hot keys
};
/// The one that is true here, with the chosen keys.
QString hotKeySentence(const HotKeySentence& sentence);

}  // namespace parlivo
