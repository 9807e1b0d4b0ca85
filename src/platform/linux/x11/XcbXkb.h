// SPDX-License-Identifier: MIT
#pragma once

// The keyboard extension's header names a field with a word that C++ keeps for itself.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpragmas"        // not every compiler knows the next one
#pragma GCC diagnostic ignored "-Wkeyword-macro"  // nor allows the macro
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#pragma GCC diagnostic pop
