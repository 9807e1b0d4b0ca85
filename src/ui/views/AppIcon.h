// SPDX-License-Identifier: MIT
#pragma once

#include <QIcon>

namespace parlivo {

/// The application's own icon, crisp at every size; a null icon if the bundle has none. Main thread.
QIcon appIcon();

}  // namespace parlivo
