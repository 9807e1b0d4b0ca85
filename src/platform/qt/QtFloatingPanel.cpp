// SPDX-License-Identifier: MIT
#include "platform/qt/QtFloatingPanel.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <cstring>

namespace parlivo {

namespace {

constexpr Qt::WindowFlags panelFlags = Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                                       Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput |
                                       Qt::BypassWindowManagerHint;

QRegion roundedRegion(QSize size, double radius) {
    QBitmap shape(size);
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(QRect(QPoint(), size), radius, radius);
    painter.end();
    return shape;
}

bool sameLayout(const QImage& a, const QImage& b) {
    return a.size() == b.size() && a.format() == b.format() && a.bytesPerLine() == b.bytesPerLine() &&
           a.devicePixelRatio() == b.devicePixelRatio();
}

}  // namespace

QtFloatingPanel::Window::Window() : QWidget(nullptr, panelFlags) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    // Every pixel is painted each time, the transparent ones too.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void QtFloatingPanel::Window::setPicture(const QImage& picture) {
    // A shared copy would make the caller's next frame allocate a new picture.
    if (sameLayout(picture, picture_))
        std::memcpy(picture_.bits(), picture.constBits(), static_cast<std::size_t>(picture.sizeInBytes()));
    else
        picture_ = picture.copy();
    update();
}

void QtFloatingPanel::Window::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(), picture_);
}

QtFloatingPanel::QtFloatingPanel(const PanelPlacing& placing, Screens& screens)
    : placing_(placing), screens_(screens) {
    window_.setFixedSize(placing_.size);
    // A panel on a screen that was unplugged would be out of sight. Later, when the toolkit is done with it.
    const auto screenGone = [this] {
        if (isVisible()) place();
    };
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &window_, screenGone, Qt::QueuedConnection);
}

void QtFloatingPanel::show() {
    place();
    fitToDesktop();
    window_.show();
    window_.raise();
}

void QtFloatingPanel::hide() {
    window_.hide();
}

FloatingPanel::Canvas QtFloatingPanel::canvas() const {
    return {.scale = window_.devicePixelRatioF(), .corners = corners_};
}

void QtFloatingPanel::present(const QImage& frame) {
    window_.setPicture(frame);
}

void QtFloatingPanel::place() {
    const auto frame = screens_.mainVisibleFrame();
    if (!frame) return;
    const int left = frame->x() + (frame->width() - placing_.size.width()) / 2;
    const int bottom = frame->y() + frame->height() - placing_.aboveEdge;
    window_.move(left, bottom - placing_.size.height());
}

/// A desktop may gain or lose its compositing manager between two showings.
void QtFloatingPanel::fitToDesktop() {
    const bool transparent = screens_.transparencyAvailable();
    corners_ = transparent ? Corners::Transparent : Corners::CutAway;
    if (transparent)
        window_.clearMask();
    else
        window_.setMask(roundedRegion(placing_.size, placing_.cornerRadius));
}

}  // namespace parlivo
