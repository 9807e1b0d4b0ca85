// SPDX-License-Identifier: MIT
#pragma once

class QPainter;
class QAbstractButton;

/// What check boxes and choices have in common, so that they stand in one column. Device-independent pixels.
namespace parlivo::RowLook {

inline constexpr int margin = 6;   ///< left of the box or circle, and at the row's right end
inline constexpr int gap = 10;     ///< from it to the words
inline constexpr int padding = 4;  ///< above and below

/// The side of the box or circle: 16 with letters of up to 10 points, and more with larger ones. For the
/// desktop's font, as textLeft().
int indicator();
int textLeft();

/// The row while the mouse is over it, and the ring around the one that has the keyboard.
void drawBackground(QPainter& painter, const QAbstractButton& row);

}  // namespace parlivo::RowLook
