// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeySymbols.h"

#include <QChar>
#include <QList>
#include <QString>

#include <xkbcommon/xkbcommon.h>

namespace parlivo::x11 {

namespace {

/// Modifiers, dead keys, function keys and the keypad: keysyms that stand for keys rather than characters.
bool standsForKey(KeySymbol symbol) {
    return symbol >= 0xfd00 && symbol <= 0xffff;
}

}  // namespace

std::optional<KeySymbol> keySymbol(char32_t codePoint) {
    if (QChar::category(codePoint) == QChar::Other_Control || QChar::isSurrogate(codePoint)) return {};
    const KeySymbol symbol = xkb_utf32_to_keysym(codePoint);
    if (symbol == XKB_KEY_NoSymbol) return {};
    return symbol;
}

KeySymbol canonical(KeySymbol symbol) {
    if (standsForKey(symbol)) return symbol;
    const char32_t codePoint = xkb_keysym_to_utf32(symbol);
    return codePoint == 0 ? symbol : keySymbol(codePoint).value_or(symbol);
}

std::vector<KeySymbol> keySymbols(QStringView text) {
    std::vector<KeySymbol> symbols;
    char32_t previous = 0;
    const auto codePoints = text.toUcs4();
    for (const char32_t codePoint : codePoints) {
        const bool pairEnd = codePoint == U'\n' && previous == U'\r';
        previous = codePoint;
        if (pairEnd) continue;
        if (codePoint == U'\n' || codePoint == U'\r') {
            symbols.push_back(XKB_KEY_Return);
        } else if (codePoint == U'\t') {
            symbols.push_back(XKB_KEY_Tab);
        } else if (const auto symbol = keySymbol(codePoint)) {
            symbols.push_back(*symbol);
        }
    }
    return symbols;
}

}  // namespace parlivo::x11
