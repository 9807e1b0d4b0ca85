#pragma once

#include <QUuid>

namespace parlivo {

/// A fresh random UUID in its canonical form, upper case, as it appears in file names and boundaries.
inline QString freshUuid() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

}  // namespace parlivo
