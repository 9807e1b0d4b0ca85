// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/Step.h"

#include <QWidget>

namespace parlivo {

/// How far the first run has come: a dot for each page.
class StepDots : public QWidget {
    Q_OBJECT

  public:
    explicit StepDots(QWidget* parent);
    void setStep(Step step);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Step step_ = Step::welcome;
};

}  // namespace parlivo
