// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <Foundation/Foundation.h>

namespace parlivo {

// By their UTF-16 units, which both kinds of text are made of: nothing is converted and nothing lost.

inline NSString* toNSString(const QString& text) {
    return [NSString stringWithCharacters:text.utf16() length:static_cast<NSUInteger>(text.size())];
}

/// An empty text for nil.
inline QString fromNSString(NSString* text) {
    if (text == nil) return {};
    QString result(static_cast<qsizetype>(text.length), Qt::Uninitialized);
    [text getCharacters:reinterpret_cast<unichar*>(result.data())];
    return result;
}

}  // namespace parlivo
