// SPDX-License-Identifier: MIT
#include "ui/views/Progress.h"

#include "ui/views/Labels.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QProgressBar>

#include <algorithm>

namespace parlivo {

namespace {
constexpr int steps = 1000;
constexpr int thickness = 8;

/// Styles give the bar an outline that does not show on a dark window.
class Bar : public QProgressBar {
  public:
    using QProgressBar::QProgressBar;

  protected:
    void paintEvent(QPaintEvent* event) override {
        // The first run's look has colours of its own for it.
        if (testAttribute(Qt::WA_StyleSheet)) return QProgressBar::paintEvent(event);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF track = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        const double radius = track.height() / 2;
        QPainterPath shape;
        shape.addRoundedRect(track, radius, radius);
        painter.fillPath(shape, palette().color(QPalette::Base));
        const double share = static_cast<double>(value() - minimum()) / (maximum() - minimum());
        painter.setClipRect(QRectF(0, 0, width() * share, height()));
        painter.fillPath(shape, accentColour(palette()));
        painter.setClipping(false);
        painter.strokePath(shape, QPen(outlineColour(palette()), 1));
    }
};

}  // namespace

QProgressBar* makeProgressBar(QWidget* parent) {
    auto* bar = new Bar(parent);
    bar->setRange(0, steps);
    bar->setTextVisible(false);
    bar->setFixedHeight(thickness);
    bar->setAccessibleName(QCoreApplication::translate("parlivo::Progress", "Avanzamento del download"));
    return bar;
}

void showFraction(QProgressBar& bar, double fraction) {
    bar.setValue(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * steps));
}

}  // namespace parlivo
