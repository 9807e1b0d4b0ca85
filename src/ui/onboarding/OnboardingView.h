// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Permissions.h"
#include "support/Lifetime.h"
#include "ui/onboarding/OnboardingDownloads.h"
#include "ui/onboarding/Step.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>

class QPushButton;

namespace parlivo {

class DownloadPage;
class FormPage;
class MicrophoneMeter;
class PermissionPage;
class StepDots;

/// The first run: seven pages, forwards only. Settings are stored on leaving the page that asks for them.
/// Main thread.
class OnboardingView : public QWidget {
    Q_OBJECT

  public:
    struct Actions {
        std::function<void()> done;          ///< after the last page
        std::function<void()> putOff;        ///< the user goes on another time
        std::function<void()> chooseHotKey;  ///< leads to where the hot key is chosen
    };
    OnboardingView(Actions actions, ModelFetch fetchModel, FreeSpace freeSpace, QWidget* parent = nullptr);

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
    void showMicrophone(MicrophoneStatus status);
    void pollAccessibility();

    const Actions actions_;
    Step step_ = Step::welcome;
    QString modelsPath_;
    QString asrChoice_;
    QString cleanupChoice_;
    OnboardingDownloads downloads_;
    MicrophoneStatus microphone_;
    bool axGranted_;
    QTimer axTimer_;

    FormPage* pages_;  ///< scrolls where the screen is too small for a page
    QWidget* page_ = nullptr;
    DownloadPage* downloadPage_ = nullptr;      ///< while it is shown
    PermissionPage* permissionPage_ = nullptr;  ///< while one of the two is shown
    MicrophoneMeter* meter_ = nullptr;          ///< while its page is shown
    StepDots* dots_ = nullptr;
    QPushButton* skip_ = nullptr;
    QPushButton* main_ = nullptr;
    Lifetime lifetime_;
};

}  // namespace parlivo
