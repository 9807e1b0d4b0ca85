// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QString>

#include <vector>

namespace parlivo {

/// One choice of hot key.
struct Preset {
    QString id;     ///< what `hotkeyPreset` stores
    QString label;  ///< its keys; hotKeyTitle() gives what the user reads
    KeyCode keyCode = 0;
    HotKeyModifiers modifiers = 0;
};

/// All presets, in the order in which they are offered; the first is also the fallback.
const std::vector<Preset>& hotKeyPresets();
/// The preset with this id, or the first one if there is none.
const Preset& hotKeyPreset(const QString& id);

}  // namespace parlivo
