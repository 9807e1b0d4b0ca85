// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPalette>

namespace parlivo {

/// The colour of every text and symbol of the first run, and the paler one of a circle that is not chosen.
QColor inkColour(const QPalette& palette);
QColor paleInkColour(const QPalette& palette);

}  // namespace parlivo
