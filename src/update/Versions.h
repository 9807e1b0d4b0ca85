#pragma once

#include <QString>

namespace parlivo {

/// Whether version `a` comes after version `b`. The dotted pieces are compared as numbers, missing ones count
/// as 0; a piece that is no plain number, or one beyond 64 bits, is left out.
bool isNewer(const QString& a, const QString& b);

}  // namespace parlivo
