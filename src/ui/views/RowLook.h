// SPDX-License-Identifier: MIT
#pragma once

class QPainter;
class QAbstractButton;

/// What check boxes and choices have in common, so that they stand in one column. Device-independent pixels.
namespace parlivo::RowLook {

inline constexpr int indicator = 16;  ///< the box or circle, square
inline constexpr int margin = 6;      ///< left of it, and at the row's right end
inline constexpr int gap = 10;        ///< from it to the words
inline constexpr int padding = 4;     ///< above and below
inline constexpr int textLeft = margin + indicator + gap;

/// The row while the mouse is over it, and the ring around the one that has the keyboard.
void drawBackground(QPainter& painter, const QAbstractButton& row);

}  // namespace parlivo::RowLook
