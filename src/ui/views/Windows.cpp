// SPDX-License-Identifier: MIT
#include "ui/views/Windows.h"

#include <QScreen>
#include <QString>
#include <QTextDocument>
#include <QWidget>

#include <algorithm>

namespace parlivo {

namespace {

/// Without what a window manager puts around a window.
QSize roomOn(const QScreen& screen) {
    constexpr int titleBar = 40;
    return screen.availableSize() - QSize(0, titleBar);
}

}  // namespace

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

void fixSize(QWidget& window, QSize size, int contentsWidth) {
    constexpr double usualLine = 19;  // the height of a line at 10 or 11 points
    const double growth = std::max(1.0, window.fontMetrics().lineSpacing() / usualLine);
    QSize wanted = (QSizeF(size) * growth).toSize().expandedTo({contentsWidth, 0});
    if (const QScreen* screen = window.screen()) wanted = wanted.boundedTo(roomOn(*screen));
    window.setFixedSize(wanted);
}

void fitToScreen(QWidget& window) {
    const QScreen* const screen = window.screen();
    window.resize(screen ? window.sizeHint().boundedTo(roomOn(*screen)) : window.sizeHint());
}

}  // namespace parlivo
