#include "audio/overlay/DictationOverlay.h"

#include "platform/Platform.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>

namespace parlivo {

namespace {

constexpr QSize panelSize(240, 84);
constexpr int heightAboveEdge = 110;

/// Window managers keep a full-screen window above all that they manage, so the card is none of theirs. That
/// shows it on every virtual desktop, too.
constexpr Qt::WindowFlags panelFlags = Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                                       Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput |
                                       Qt::BypassWindowManagerHint;

QRegion roundedRegion() {
    QBitmap shape(panelSize);
    shape.fill(Qt::color0);
    QPainter painter(&shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(QRect(QPoint(), panelSize), WaveformPainter::cornerRadius,
                            WaveformPainter::cornerRadius);
    painter.end();
    return shape;
}

}  // namespace

DictationOverlay::~DictationOverlay() = default;

void DictationOverlay::setLevelProvider(LevelProvider provider) {
    levelProvider_ = std::move(provider);
    if (waveView_) waveView_->setLevelProvider(levelProvider_);
}

void DictationOverlay::clearWaveLevelProvider() {
    if (waveView_) waveView_->setLevelProvider({});
}

void DictationOverlay::show() {
    if (!panel_) createPanel();
    waveView_->setLevelProvider(levelProvider_);
    place();
    fitToDesktop();
    waveView_->start();
    panel_->show();
    panel_->raise();
}

void DictationOverlay::hide() {
    if (!panel_) return;
    waveView_->stop();
    panel_->hide();
}

void DictationOverlay::createPanel() {
    panel_ = std::make_unique<QWidget>(nullptr, panelFlags);
    panel_->setAttribute(Qt::WA_ShowWithoutActivating);
    panel_->setAttribute(Qt::WA_TranslucentBackground);
    panel_->setAttribute(Qt::WA_QuitOnClose, false);
    panel_->setFixedSize(panelSize);
    waveView_ = new WaveformView(panel_.get());
    waveView_->setGeometry(QRect(QPoint(), panelSize));
    // A card on a screen that was unplugged would be out of sight. Later, when the toolkit is done with it.
    const auto screenGone = [this] {
        if (panel_->isVisible()) place();
    };
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, panel_.get(), screenGone,
                     Qt::QueuedConnection);
}

void DictationOverlay::place() {
    const auto frame = Platform::current().screens().mainVisibleFrame();
    if (!frame) return;
    const int left = frame->x() + (frame->width() - panelSize.width()) / 2;
    const int bottom = frame->y() + frame->height() - heightAboveEdge;
    panel_->move(left, bottom - panelSize.height());
}

/// A desktop may gain or lose its compositing manager between two showings.
void DictationOverlay::fitToDesktop() {
    const bool transparent = Platform::current().screens().transparencyAvailable();
    waveView_->setSurroundings(transparent ? WaveformPainter::Surroundings::Transparent
                                           : WaveformPainter::Surroundings::CutAway);
    if (transparent)
        panel_->clearMask();
    else
        panel_->setMask(roundedRegion());
}

}  // namespace parlivo
