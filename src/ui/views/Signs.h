// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Gives all windows and menus of this program the signs that its texts contain (a tick, a microphone, …),
/// also where no installed font has them: those of the bundle's "fonts/parlivo-signs.ttf", which
/// tools/make-signs draws and the build puts in where the system has none itself. Once a QApplication exists.
void installSigns();

}  // namespace parlivo
