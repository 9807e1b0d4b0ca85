// SPDX-License-Identifier: MIT
#pragma once

#include "ui/ModelFetch.h"
#include "ui/onboarding/OnboardingDownloads.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace parlivo {

/// The first-run window. Its last page ends the first run; the user may also put it off. Main thread.
class OnboardingWindowController {
    Q_DECLARE_TR_FUNCTIONS(parlivo::OnboardingWindowController)

  public:
    explicit OnboardingWindowController(ModelFetch fetchModel = fetchFromHost,
                                        FreeSpace freeSpace = freeSpaceOnDisk);
    ~OnboardingWindowController();
    OnboardingWindowController(const OnboardingWindowController&) = delete;
    OnboardingWindowController& operator=(const OnboardingWindowController&) = delete;

    /// Called once, when the user has finished the first run.
    std::function<void()> onFinished;
    /// Called whenever the user has put the rest of it off: the window is gone, show() brings it back.
    std::function<void()> onPutOff;
    /// Leads to where the hot key is chosen.
    std::function<void()> chooseHotKey;

    /// Builds the window on the first call, then brings it to the front.
    void show();
    /// Shows the window again if the first run was put off; false if it was not.
    bool resume();
    QWidget* window() const { return window_.get(); }

  private:
    void finish();
    void askToPutOff();
    void putOff();

    const ModelFetch fetchModel_;
    const FreeSpace freeSpace_;
    bool isPutOff_ = false;
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
