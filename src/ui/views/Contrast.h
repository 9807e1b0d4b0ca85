// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

/// How well colours can be told apart.
namespace parlivo {

/// Contrast ratios that a text and a drawing (an icon, the outline of a control) must reach. Both are
/// somewhat above the least values of WCAG 2.1 (4.5 and 3), because smoothing makes thin lines paler than
/// their colour.
inline constexpr double textContrast = 5.5;
inline constexpr double drawingContrast = 3.4;

/// 1 (the same) to 21 (black and white), of two opaque colours.
/// https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio
double contrast(const QColor& one, const QColor& other);

/// `colour` with its hue, made darker on a light background and lighter on a dark one as far as it takes to
/// reach the contrast `ratio`, and no further.
QColor legible(const QColor& colour, const QColor& background, double ratio);

/// `colour`, which may be partly transparent, as it looks on an opaque background.
QColor composited(const QColor& colour, const QColor& background);

}  // namespace parlivo
