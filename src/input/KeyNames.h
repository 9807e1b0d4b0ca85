// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QString>

/// What keys are called. Main thread.
namespace parlivo::KeyNames {

/// "Spazio", "F9", "Pausa", or what the user's layout prints on the key.
QString nameOf(KeyCode key);

/// Whether the key does nothing in a text, so that it may be a hot key without a modifier: function and
/// multimedia keys, Pause.
bool isUsableAlone(KeyCode key);

}  // namespace parlivo::KeyNames
