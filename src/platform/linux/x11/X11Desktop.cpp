// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Desktop.h"

#include "platform/linux/x11/TraySelectionWatch.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>

#include <utility>

namespace parlivo {

namespace {

/// What can be read on the colour that lies behind an icon: at its corners no symbol has ink.
StatusItemPlace::Foreground readableOn(const QImage& icon) {
    const QPoint last(icon.width() - 1, icon.height() - 1);
    float lightness = 0;
    for (const QPoint corner : {QPoint(0, 0), QPoint(last.x(), 0), QPoint(0, last.y()), last})
        lightness += icon.pixelColor(corner).lightnessF() / 4;
    return lightness > 0.5F ? StatusItemPlace::Foreground::Dark : StatusItemPlace::Foreground::Light;
}

}  // namespace

std::unique_ptr<TrayWatch> X11Desktop::watchTray(std::function<void()> changed) {
    return std::make_unique<TraySelectionWatch>(std::move(changed));
}

StatusItemPlace::Foreground X11Desktop::foregroundAt(const QRect& place) {
    QScreen* const screen = place.isEmpty() ? nullptr : QGuiApplication::screenAt(place.center());
    if (!screen) return StatusItemPlace::Foreground::Unknown;
    const QPoint corner = place.topLeft() - screen->geometry().topLeft();
    const QImage picture =
        screen->grabWindow(0, corner.x(), corner.y(), place.width(), place.height()).toImage();
    return picture.isNull() ? StatusItemPlace::Foreground::Unknown : readableOn(picture);
}

QString X11Desktop::summary() {
    return QStringLiteral("X11: tasto globale, testo e incolla da tastiera sintetica, pannello");
}

}  // namespace parlivo
