// SPDX-License-Identifier: MIT
#pragma once

#include <QUuid>

namespace parlivo {

/// A fresh random UUID in its canonical form, upper case, as it appears in file names and boundaries.
inline QString freshUuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

/// The regular expression for such a UUID.
inline const QString uuidPattern = QStringLiteral("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");

}  // namespace parlivo
