// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPalette>

namespace parlivo {

/// The colour of every text and symbol of the first run, and the paler one of a circle that is not chosen.
QColor inkColour(const QPalette& palette);
QColor paleInkColour(const QPalette& palette);

/// Of thin lines around what is too pale alone.
QColor edgeInkColour(const QPalette& palette);

}  // namespace parlivo
