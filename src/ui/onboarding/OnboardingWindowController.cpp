// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingWindowController.h"

#include "settings/Config.h"
#include "ui/onboarding/OnboardingView.h"
#include "ui/onboarding/OnboardingWindow.h"
#include "ui/views/Dialogs.h"
#include "ui/views/Windows.h"

#include <QVBoxLayout>

#include <utility>

namespace parlivo {

OnboardingWindowController::OnboardingWindowController(ModelFetch fetchModel, FreeSpace freeSpace)
    : fetchModel_(std::move(fetchModel)), freeSpace_(std::move(freeSpace)) {}

OnboardingWindowController::~OnboardingWindowController() = default;

void OnboardingWindowController::show() {
    if (!window_) {
        auto window = std::make_unique<OnboardingWindow>([this] { askToPutOff(); });
        auto* column = new QVBoxLayout(window.get());
        column->setContentsMargins(0, 0, 0, 0);
        // The window, and with it the view, goes with this controller.
        column->addWidget(new OnboardingView({.done = [this] { finish(); },
                                              .putOff = [this] { putOff(); },
                                              .chooseHotKey =
                                                  [this] {
                                                      if (chooseHotKey) chooseHotKey();
                                                  }},
                                             fetchModel_, freeSpace_, window.get()));
        window_ = std::move(window);
        centreOnScreen(*window_);
    }
    isPutOff_ = false;
    bringToFront(*window_);
}

bool OnboardingWindowController::resume() {
    if (!isPutOff_) return false;
    show();
    return true;
}

void OnboardingWindowController::askToPutOff() {
    const int later = 1;
    const int answer = Dialogs::current().ask(
        {.message = tr("Vuoi finire più tardi?"),
         .informativeText = tr("Parlivo resta in esecuzione: riprendi dal suo menu, o avviandolo di nuovo."),
         .buttons = {tr("Continua ora"), tr("Più tardi")}});
    if (answer == later) putOff();
}

void OnboardingWindowController::putOff() {
    isPutOff_ = true;
    window_->hide();
    if (onPutOff) onPutOff();
}

void OnboardingWindowController::finish() {
    Config::set(Settings::onboardingDone, true);
    Config::flush();
    window_->hide();
    if (onFinished) onFinished();
}

}  // namespace parlivo
