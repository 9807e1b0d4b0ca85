// SPDX-License-Identifier: MIT
#pragma once

#include <QSize>

class QString;
class QWidget;

namespace parlivo {

/// Shows a window, restored if it was minimised, and gives it the focus, whatever program has it now.
void bringToFront(QWidget& window);

/// Shows `text` as the widget's tool tip, also what looks like markup.
void setPlainToolTip(QWidget& widget, const QString& text);

/// Moves a window that was not shown yet to the middle of the screen.
void centreOnScreen(QWidget& window);

/// Gives a window a fixed size: `size` where the desktop's font is of the usual size, more where it is larger
/// or where the window's contents need more width, and never more than the screen has room for.
void fixSize(QWidget& window, QSize size, int contentsWidth = 0);

/// Makes a window that was not shown yet as large as it likes to be, if the screen has room for that.
void fitToScreen(QWidget& window);

}  // namespace parlivo
