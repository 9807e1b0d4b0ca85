#pragma once

#include "models/ModelCatalog.h"
#include "support/Lifetime.h"
#include "ui/ModelFetch.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QPushButton;
class QVBoxLayout;

namespace parlivo {

class DownloadPage;
class PermissionPage;
class StepDots;

/// The pages of the first run, in their order.
enum class Step { welcome, folder, quality, download, microphone, accessibility, ready };
inline constexpr int stepCount = 7;

/// Where the downloads of the first run stand.
struct DownloadState {
    bool downloading = false;
    QString downloadLabel;
    double progress = 0;  ///< of the current file, 0 to 1
    qint64 received = 0;  ///< bytes of the current file
    qint64 total = 1;
    std::optional<QString> downloadError;
    bool downloadsDone = false;
};

/// The first run: seven pages, forwards only. Settings are stored on leaving the page that asks for them.
class OnboardingView : public QWidget {
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
    void startDownloads();
    void runQueue(const std::vector<ModelCatalog::Entry>& queue, std::size_t index);
    void downloadEnded(const std::optional<Error>& error, const std::vector<ModelCatalog::Entry>& queue,
                       std::size_t index);
    void showDownloads();
    void askForMicrophone();
    void lookForAccessibility();

    const std::function<void()> onDone_;
    const ModelFetch fetchModel_;
    Step step_ = Step::welcome;
    QString modelsPath_;
    QString asrChoice_;
    QString cleanupChoice_;
    DownloadState downloads_;
    std::shared_ptr<void> downloader_;
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
