// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingWindowController.h"

#include "settings/Config.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/onboarding/OnboardingWindow.h"
#include "ui/views/Windows.h"

#include <QVBoxLayout>

#include <utility>

namespace parlivo {

OnboardingWindowController::OnboardingWindowController(ModelFetch fetchModel)
    : fetchModel_(std::move(fetchModel)) {}

OnboardingWindowController::~OnboardingWindowController() = default;

void OnboardingWindowController::show() {
    if (!window_) {
        auto window = std::make_unique<OnboardingWindow>();
        auto* column = new QVBoxLayout(window.get());
        column->setContentsMargins(0, 0, 0, 0);
        // The window, and with it the view, goes with this controller.
        column->addWidget(new OnboardingView([this] { finish(); }, fetchModel_, window.get()));
        window_ = std::move(window);
        centreOnScreen(*window_);
    }
    bringToFront(*window_);
}

void OnboardingWindowController::finish() {
    Config::set(Settings::onboardingDone, true);
    Config::flush();
    window_->hide();
    if (onFinished) onFinished();
}

}  // namespace parlivo
