// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// Whether version `a` comes after version `b`. The dotted pieces are compared as numbers, missing ones count
/// as 0; a piece that is no plain number, or one beyond 64 bits, is left out. Not with QVersionNumber, which
/// stops at the first such piece and at an empty one ("1..2", "1.x.3"), takes "3-beta" for 3, and puts 1.2.0
/// after 1.2.
bool isNewer(const QString& a, const QString& b);

}  // namespace parlivo
