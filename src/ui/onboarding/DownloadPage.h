// SPDX-License-Identifier: MIT
#pragma once

#include "ui/onboarding/CentredPage.h"
#include "ui/onboarding/OnboardingDownloads.h"

#include <functional>

class QProgressBar;
class QPushButton;

namespace parlivo {

/// Shows how the downloads of the first run stand.
class DownloadPage : public CentredPage {
    Q_OBJECT

  public:
    struct Actions {
        std::function<void()> retry;
        std::function<void()> later;
    };
    DownloadPage(const Actions& actions, QWidget* parent);

    /// Also moves the focus: onto "Riprova" after a failure, and away from what is no longer shown.
    void show(const DownloadState& state);

  private:
    void addProgress();
    void addFailure(const Actions& actions);

    QWidget* running_ = nullptr;
    Label* label_ = nullptr;
    QProgressBar* bar_ = nullptr;
    Label* figures_ = nullptr;
    Label* forecast_ = nullptr;  ///< of all files
    QWidget* failed_ = nullptr;
    Label* error_ = nullptr;
    QPushButton* retry_ = nullptr;
    QWidget* done_ = nullptr;
};

}  // namespace parlivo
