// SPDX-License-Identifier: MIT
#include "ui/views/Progress.h"

#include <QCoreApplication>
#include <QProgressBar>

#include <algorithm>

namespace parlivo {

namespace {
constexpr int steps = 1000;
constexpr int thickness = 8;
}  // namespace

QProgressBar* makeProgressBar(QWidget* parent) {
    auto* bar = new QProgressBar(parent);
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
