#pragma once

class QWidget;

namespace parlivo {

/// Shows a window, restored if it was minimised, and gives it the focus, whatever program has it now.
void bringToFront(QWidget& window);

/// Moves a window that was not shown yet to the middle of the screen.
void centreOnScreen(QWidget& window);

}  // namespace parlivo
