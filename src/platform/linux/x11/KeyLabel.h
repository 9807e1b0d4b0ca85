// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeySymbols.h"

#include <QString>

namespace parlivo::x11 {

/// What is printed on a key that gives `symbol`: its character in upper case, the accent of a dead key, or
/// the keysym's name ("F9"). Empty for no symbol.
QString keyLabel(KeySymbol symbol);

/// What the user's layout prints on a key, in the group in force. Empty if the server does not answer or the
/// key gives nothing. The connection must have started the keyboard extension.
QString keyLabel(xcb_connection_t* connection, xcb_keycode_t key);

}  // namespace parlivo::x11
