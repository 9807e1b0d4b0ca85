// SPDX-License-Identifier: MIT
#pragma once

class QString;
class QWidget;

namespace parlivo {

/// Shows a window, restored if it was minimised, and gives it the focus, whatever program has it now.
void bringToFront(QWidget& window);

/// Shows `text` as the widget's tool tip, also what looks like markup.
void setPlainToolTip(QWidget& widget, const QString& text);

/// Moves a window that was not shown yet to the middle of the screen.
void centreOnScreen(QWidget& window);

}  // namespace parlivo
