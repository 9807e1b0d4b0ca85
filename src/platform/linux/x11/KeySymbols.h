// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <xcb/xcb.h>

#include <optional>
#include <vector>

/// Characters as X keysyms.
namespace parlivo::x11 {

using KeySymbol = xcb_keysym_t;

/// The keysym that enters a code point. nullopt for control characters, which would be commands to the
/// receiver, and for code points that are no characters.
std::optional<KeySymbol> keySymbol(char32_t codePoint);

/// The keysym by which every key that enters the same character is known: layouts name many characters in two
/// ways. Function keys and dead keys are themselves.
KeySymbol canonical(KeySymbol symbol);

/// The keysyms that enter a text, in order. A line end (a CR LF pair is one) is the Return key and a tab the
/// Tab key.
std::vector<KeySymbol> keySymbols(QStringView text);

}  // namespace parlivo::x11
