// SPDX-License-Identifier: MIT
#include "ui/views/Windows.h"

#include <QScreen>
#include <QString>
#include <QTextDocument>
#include <QWidget>

namespace parlivo {

void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

void setPlainToolTip(QWidget& widget, const QString& text) {
    widget.setToolTip(Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text);
}

void centreOnScreen(QWidget& window) {
    if (const QScreen* screen = window.screen()) {
        QRect frame(QPoint(), window.size());
        frame.moveCenter(screen->availableGeometry().center());
        window.move(frame.topLeft());
    }
}

}  // namespace parlivo
