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
    painter.setPen(Qt::NoPen);
    painter.setBrush(inkColour(palette()));
    for (int i = 0; i < stepCount; ++i) {
        painter.setOpacity(i == static_cast<int>(step_) ? 1 : otherDots);
        painter.drawEllipse(i * (dotSize + dotGap), 0, dotSize, dotSize);
    }
}

}  // namespace parlivo
