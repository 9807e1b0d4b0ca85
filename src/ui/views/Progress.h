// SPDX-License-Identifier: MIT
#pragma once

class QProgressBar;
class QWidget;

namespace parlivo {

/// A thin progress bar without text.
QProgressBar* makeProgressBar(QWidget* parent);

/// Shows a fraction; one beyond 1 is a full bar.
void showFraction(QProgressBar& bar, double fraction);

}  // namespace parlivo
