// SPDX-License-Identifier: MIT
#include "ui/onboarding/StepDots.h"

#include "ui/onboarding/InkColour.h"

#include <QPainter>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

constexpr int dotSize = 7;
constexpr int dotGap = 7;
constexpr double otherDots = 0.2;

}  // namespace

StepDots::StepDots(QWidget* parent) : QWidget(parent) {
    setFixedSize(stepCount * dotSize + (stepCount - 1) * dotGap, dotSize);
}

void StepDots::setStep(Step step) {
    step_ = step;
    setAccessibleName(tr("Passo %1 di %2").arg(static_cast<int>(step) + 1).arg(stepCount));
    update();
}

void StepDots::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < stepCount; ++i) {
        const bool current = i == static_cast<int>(step_);
        const QRectF dot(i * (dotSize + dotGap), 0, dotSize, dotSize);
        painter.setPen(Qt::NoPen);
        painter.setBrush(inkColour(palette()));
        painter.setOpacity(current ? 1 : otherDots);
        painter.drawEllipse(dot);
        if (current) continue;
        painter.setPen(QPen(edgeInkColour(palette()), 1));
        painter.setBrush(Qt::NoBrush);
        painter.setOpacity(1);
        painter.drawEllipse(dot.adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

}  // namespace parlivo
