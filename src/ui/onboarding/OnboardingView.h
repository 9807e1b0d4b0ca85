// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "ui/onboarding/OnboardingDownloads.h"
#include "ui/onboarding/Step.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>

class QPushButton;
class QVBoxLayout;

namespace parlivo {

class DownloadPage;
class PermissionPage;
class StepDots;

/// The first run: seven pages, forwards only. Settings are stored on leaving the page that asks for them.
/// Main thread.
class OnboardingView : public QWidget {
    Q_OBJECT

  public:
    OnboardingView(std::function<void()> onDone, ModelFetch fetchModel, QWidget* parent = nullptr);

    Step step() const { return step_; }

  private:
    void next();
    void showStep();
    QWidget* makePage();
    QWidget* makeFolderPage();
    QWidget* makeQualityPage();
    QWidget* makeDownloadPage();
    QWidget* makeMicrophonePage();
    QWidget* makeAccessibilityPage();
    QWidget* makeFooter();
    void updateFooter();

    void pickFolder();
    void showDownloads();
    void askForMicrophone();
    void showMicrophone(bool granted);
    void pollAccessibility();

    const std::function<void()> onDone_;
    Step step_ = Step::welcome;
    QString modelsPath_;
    QString asrChoice_;
    QString cleanupChoice_;
    OnboardingDownloads downloads_;
    bool micGranted_;
    bool axGranted_;
    QTimer axTimer_;

    QVBoxLayout* column_;
    QWidget* page_ = nullptr;
    DownloadPage* downloadPage_ = nullptr;      ///< while it is shown
    PermissionPage* permissionPage_ = nullptr;  ///< while one of the two is shown
    StepDots* dots_ = nullptr;
    QPushButton* skip_ = nullptr;
    QPushButton* main_ = nullptr;
    Lifetime lifetime_;
};

}  // namespace parlivo
