// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace parlivo::desktop {

/// Everything that the display's keyboard map consists of, byte for byte as the X server tells it: types,
/// keysyms, actions, behaviours, virtual modifiers, explicit components and modifiers.
QByteArray keyboardMap();

}  // namespace parlivo::desktop
