// SPDX-License-Identifier: MIT

// A file of its own, so that a program with another key differs in this object alone.
#include "update/UpdateAuthenticity.h"

namespace parlivo {

std::optional<UpdateKey> builtInUpdateKey() {
    const QByteArray text(PARLIVO_UPDATE_KEY);
    if (text.isEmpty()) return std::nullopt;
    return QByteArray::fromBase64(text);
}

}  // namespace parlivo
