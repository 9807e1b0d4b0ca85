// SPDX-License-Identifier: MIT
#include "ui/onboarding/OnboardingDownloads.h"

#include "settings/Config.h"
#include "support/Clock.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <chrono>
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

constexpr qint64 mebibyte = 1 << 20;

/// Of the queue's files from `first` on; 0 if one has no known size.
qint64 sizeOf(const std::vector<ModelCatalog::Entry>& queue, std::size_t first = 0) {
    qint64 sum = 0;
    for (std::size_t i = first; i < queue.size(); ++i) {
        if (queue[i].expectedSize < 1) return 0;
        sum += queue[i].expectedSize;
    }
    return sum;
}

}  // namespace

std::optional<qint64> freeSpaceOnDisk(const QString& folder) {
    QDir place(folder);
    while (!place.exists() && !place.isRoot()) place.setPath(QFileInfo(place.path()).path());
    const QStorageInfo disk(place);
    return disk.isValid() ? std::optional(disk.bytesAvailable()) : std::nullopt;
}

OnboardingDownloads::OnboardingDownloads(ModelFetch fetchModel, std::function<void()> onChange,
                                         FreeSpace freeSpace)
    : fetchModel_(std::move(fetchModel)), onChange_(std::move(onChange)), freeSpace_(std::move(freeSpace)) {
    stallCheck_.setInterval(std::chrono::seconds(1));
    QObject::connect(&stallCheck_, &QTimer::timeout, &stallCheck_, [this] {
        const bool stalled = state_.downloading && rate_.isStalled(Clock::now());
        if (std::exchange(state_.stalled, stalled) != stalled) onChange_();
    });
}

void OnboardingDownloads::startDownloads() {
    if (state_.downloading) return;
    state_.downloadError.reset();
    const auto queue = missingModels();
    if (queue.empty()) {
        state_.downloadsDone = true;
    } else if (hasRoomFor(queue)) {
        state_.downloading = true;
        state_.allTotal = sizeOf(queue);
        stallCheck_.start();
        runQueue(queue, 0);
    }
    onChange_();
}

bool OnboardingDownloads::hasRoomFor(const Queue& queue) {
    const qint64 needed = sizeOf(queue);
    const auto free = freeSpace_(Config::modelsDir());
    if (!free || *free >= needed) return true;
    state_.downloadError = tr("Spazio insufficiente sul disco: servono %1 MB, liberi %2 MB")
                               .arg(needed / mebibyte + 1)
                               .arg(*free / mebibyte);
    return false;
}

void OnboardingDownloads::runQueue(const Queue& queue, std::size_t index) {
    if (index >= queue.size()) {
        state_.downloading = false;
        state_.downloadsDone = true;
        stallCheck_.stop();
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
    rate_.start(Clock::now());
    progressed(queue, index);
    downloader_ = fetchModel_(
        entry,
        {.onProgress =
             [this, queue, index](double fraction, qint64 written, qint64 total) {
                 state_.progress = fraction;
                 state_.received = written;
                 state_.total = total;
                 rate_.add(written, Clock::now());
                 progressed(queue, index);
             },
         .onCompletion = [this, queue, index](const auto& error) { downloadEnded(error, queue, index); }});
}

void OnboardingDownloads::progressed(const Queue& queue, std::size_t index) {
    state_.allReceived = state_.allTotal - sizeOf(queue, index) + state_.received;
    state_.bytesPerSecond = rate_.bytesPerSecond();
    state_.stalled = rate_.isStalled(Clock::now());
    onChange_();
}

void OnboardingDownloads::downloadEnded(const std::optional<Error>& error, const Queue& queue,
                                        std::size_t index) {
    if (error) {
        state_.downloading = false;
        stallCheck_.stop();
        state_.downloadError = error->localizedDescription();
        onChange_();
        return;
    }
    runQueue(queue, index + 1);
}

}  // namespace parlivo
