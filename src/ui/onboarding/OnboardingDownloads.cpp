// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingDownloads.h"

#include "settings/Config.h"

#include <algorithm>
#include <utility>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

/// What is chosen and not there yet, by the stored settings; the recognition model first.
std::vector<ModelCatalog::Entry> missingModels() {
    std::vector<ModelCatalog::Entry> queue;
    const auto add = [&](const ModelCatalog::Entry& model) {
        if (!ModelCatalog::isDownloaded(model)) queue.push_back(model);
    };
    add(ModelCatalog::asrTier(Config::get(Settings::asrTier)));
    add(ModelCatalog::cleanupTier(Config::get(Settings::cleanupTier)));
    return queue;
}

}  // namespace

OnboardingDownloads::OnboardingDownloads(ModelFetch fetchModel, std::function<void()> onChange)
    : fetchModel_(std::move(fetchModel)), onChange_(std::move(onChange)) {}

void OnboardingDownloads::startDownloads() {
    if (state_.downloading) return;
    state_.downloadError.reset();
    const auto queue = missingModels();
    if (queue.empty()) {
        state_.downloadsDone = true;
    } else {
        state_.downloading = true;
        runQueue(queue, 0);
    }
    onChange_();
}

void OnboardingDownloads::runQueue(const Queue& queue, std::size_t index) {
    if (index >= queue.size()) {
        state_.downloading = false;
        state_.downloadsDone = true;
        onChange_();
        return;
    }
    const ModelCatalog::Entry& entry = queue[index];
    state_.downloadLabel =
        tr("%1 di %2: %3 — %4")
            .arg(QString::number(index + 1), QString::number(queue.size()), entry.label, entry.fileName);
    state_.progress = 0;
    state_.received = 0;
    state_.total = std::max<qint64>(entry.expectedSize, 1);
    onChange_();
    downloader_ = fetchModel_(
        entry,
        {.onProgress =
             [this](double fraction, qint64 written, qint64 total) {
                 state_.progress = fraction;
                 state_.received = written;
                 state_.total = total;
                 onChange_();
             },
         .onCompletion = [this, queue, index](const auto& error) { downloadEnded(error, queue, index); }});
}

void OnboardingDownloads::downloadEnded(const std::optional<Error>& error, const Queue& queue,
                                        std::size_t index) {
    if (error) {
        state_.downloading = false;
        state_.downloadError = error->localizedDescription();
        onChange_();
        return;
    }
    runQueue(queue, index + 1);
}

}  // namespace parlivo
