// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Makes dates, numbers and the toolkit's own words Italian, and puts what is true of this system in the
/// place of texts that speak of another: where the bundle has the catalogue "translations/parlivo.qm", which
/// the build puts in for some systems. Once an application object exists, before the first text is shown.
void installTranslation();

}  // namespace parlivo
