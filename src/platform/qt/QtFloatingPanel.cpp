// SPDX-License-Identifier: MIT
#include "platform/qt/QtFloatingPanel.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

#include <cstring>

namespace parlivo {

namespace {

constexpr Qt::WindowFlags panelFlags = Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                                       Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput |
                                       Qt::BypassWindowManagerHint;

/// What the screen shows there now; null where it may not be looked at.
QImage pictureOf(const QWidget& window, const QRect& area) {
    QScreen* screen = QGuiApplication::screenAt(area.center());
    if (!screen) screen = window.screen();
    const QPoint corner = area.topLeft() - screen->geometry().topLeft();
    return screen->grabWindow(0, corner.x(), corner.y(), area.width(), area.height()).toImage();
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
    update(rect().adjusted(margin_, margin_, -margin_, -margin_));
}

void QtFloatingPanel::Window::setSurroundings(const QImage& ground, const QImage& edge, int margin) {
    ground_ = ground;
    edge_ = edge;
    margin_ = margin;
    update();
}

void QtFloatingPanel::Window::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    if (!ground_.isNull()) {
        painter.drawImage(QPointF(), ground_);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    painter.drawImage(QPointF(margin_, margin_), picture_);
    if (edge_.isNull()) return;
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(QPointF(), edge_);
}

QtFloatingPanel::QtFloatingPanel(const PanelPlacing& placing, Screens& screens, Shadow shadow)
    : placing_(placing), screens_(screens), shadow_(shadow) {
    window_.setFixedSize(placing_.size);
    // A panel on a screen that was unplugged would be out of sight. Later, when the toolkit is done with it.
    const auto screenGone = [this] {
        if (isVisible()) place();
    };
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &window_, screenGone, Qt::QueuedConnection);
}

void QtFloatingPanel::show() {
    const bool transparent = screens_.transparencyAvailable();
    margin_ = shadow_ == Shadow::Drawn && transparent ? shadowMargin : 0;
    window_.setFixedSize(shape(margin_).windowSize());
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

QRect QtFloatingPanel::geometry() const {
    return window_.geometry().adjusted(margin_, margin_, -margin_, -margin_);
}

void QtFloatingPanel::place() {
    const auto frame = screens_.mainVisibleFrame();
    if (!frame) return;
    const int left = frame->x() + (frame->width() - placing_.size.width()) / 2;
    const int bottom = frame->y() + frame->height() - placing_.aboveEdge;
    window_.move(left - margin_, bottom - placing_.size.height() - margin_);
}

/// A desktop may gain or lose its compositing manager between two showings.
void QtFloatingPanel::fitToDesktop() {
    if (shadow_ == Shadow::BySystem || margin_ > 0) {
        becomeTransparent();
    } else {
        becomeCutOut();
    }
}

void QtFloatingPanel::becomeTransparent() {
    cutOut_ = false;
    corners_ = Corners::Transparent;
    window_.clearMask();
    const bool drawn = shadow_ == Shadow::Drawn;
    window_.setSurroundings(drawn ? shadowGround(shape(margin_), window_.devicePixelRatioF()) : QImage(), {},
                            margin_);
}

/// Without a compositing manager a window has no partly transparent pixels: those of its round edge are mixed
/// with what the screen showed there when the panel came up.
void QtFloatingPanel::becomeCutOut() {
    if (isVisible() && cutOut_) return;
    cutOut_ = true;
    window_.setMask(coveredRegion(shape(margin_)));
    const QImage behind = isVisible() ? QImage() : pictureOf(window_, window_.geometry());
    corners_ = behind.isNull() ? Corners::CutAway : Corners::Transparent;
    window_.setSurroundings(behind, innerEdge(shape(margin_), window_.devicePixelRatioF()), margin_);
}

}  // namespace parlivo
