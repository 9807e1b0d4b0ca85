// SPDX-License-Identifier: MIT
#pragma once

#include "ui/ModelFetch.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace parlivo {

/// The first-run window. Only its last page closes it. Main thread.
class OnboardingWindowController {
  public:
    explicit OnboardingWindowController(ModelFetch fetchModel = fetchFromHost);
    ~OnboardingWindowController();
    OnboardingWindowController(const OnboardingWindowController&) = delete;
    OnboardingWindowController& operator=(const OnboardingWindowController&) = delete;

    /// Called once, when the user has finished the first run.
    std::function<void()> onFinished;

    /// Builds the window on the first call, then brings it to the front.
    void show();
    QWidget* window() const { return window_.get(); }

  private:
    void finish();

    const ModelFetch fetchModel_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
