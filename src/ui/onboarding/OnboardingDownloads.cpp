#include "settings/Config.h"
#include "ui/onboarding/OnboardingPages.h"
#include "ui/onboarding/OnboardingView.h"

#include <QPushButton>

#include <algorithm>

// The page of the first run that downloads the chosen models, one after the other.
namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

/// What is chosen and not there yet, by the stored settings; the recognition model first.
std::vector<ModelCatalog::Entry> missingModels() {
    std::vector<ModelCatalog::Entry> queue;
    const auto& asr = ModelCatalog::asrTier(Config::get(Settings::asrTier));
    if (!ModelCatalog::isDownloaded(asr)) queue.push_back(asr);
    const auto& cleanup = ModelCatalog::cleanupTier(Config::get(Settings::cleanupTier));
    if (!ModelCatalog::isDownloaded(cleanup)) queue.push_back(cleanup);
    return queue;
}

}  // namespace

QWidget* OnboardingView::makeDownloadPage() {
    downloadPage_ = new DownloadPage([this] { startDownloads(); }, this);
    return downloadPage_;
}

void OnboardingView::startDownloads() {
    downloads_.downloadError.reset();
    const auto queue = missingModels();
    if (queue.empty()) {
        downloads_.downloadsDone = true;
    } else {
        downloads_.downloading = true;
        runQueue(queue, 0);
    }
    showDownloads();
}

void OnboardingView::runQueue(const std::vector<ModelCatalog::Entry>& queue, std::size_t index) {
    if (index >= queue.size()) {
        downloads_.downloading = false;
        downloads_.downloadsDone = true;
        showDownloads();
        return;
    }
    const ModelCatalog::Entry& entry = queue[index];
    downloads_.downloadLabel =
        u"%1 di %2: "_s.arg(index + 1).arg(queue.size()) + entry.label + u" — "_s + entry.fileName;
    downloads_.progress = 0;
    downloads_.received = 0;
    downloads_.total = std::max<qint64>(entry.expectedSize, 1);
    showDownloads();
    downloader_ = fetchModel_(
        entry,
        {.onProgress =
             [this](double fraction, qint64 written, qint64 total) {
                 downloads_.progress = fraction;
                 downloads_.received = written;
                 downloads_.total = total;
                 showDownloads();
             },
         .onCompletion = [this, queue, index](const auto& error) { downloadEnded(error, queue, index); }});
}

void OnboardingView::downloadEnded(const std::optional<Error>& error,
                                   const std::vector<ModelCatalog::Entry>& queue, std::size_t index) {
    if (error) {
        downloads_.downloading = false;
        downloads_.downloadError = error->localizedDescription();
        showDownloads();
        return;
    }
    runQueue(queue, index + 1);
}

void OnboardingView::showDownloads() {
    if (downloadPage_) downloadPage_->show(downloads_);
    updateFooter();
    if (downloads_.downloadsDone) main_->setFocus();
}

}  // namespace parlivo
