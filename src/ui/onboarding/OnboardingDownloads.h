// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "ui/ModelFetch.h"
#include "ui/onboarding/TransferRate.h"

#include <QCoreApplication>
#include <QString>
#include <QTimer>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

/// How the downloads of the first run stand.
struct DownloadState {
    bool downloading = false;
    QString downloadLabel;
    double progress = 0;     ///< of the current file, 0 to 1
    qint64 received = 0;     ///< bytes of the current file
    qint64 total = 1;        ///< bytes of the current file
    qint64 allReceived = 0;  ///< bytes of all files
    qint64 allTotal = 0;     ///< bytes of all files; 0 if one of them has no known size
    std::optional<double> bytesPerSecond;
    bool stalled = false;  ///< nothing has come for ten seconds
    std::optional<QString> downloadError;
    bool downloadsDone = false;
};

/// The bytes that are free for a folder that may not exist yet; nullopt if that cannot be told.
using FreeSpace = std::function<std::optional<qint64>(const QString& folder)>;
std::optional<qint64> freeSpaceOnDisk(const QString& folder);

/// Downloads the chosen models of the first run, one after the other. Main thread.
class OnboardingDownloads {
    Q_DECLARE_TR_FUNCTIONS(parlivo::OnboardingDownloads)

  public:
    /// `onChange` is called after every change of the state.
    OnboardingDownloads(ModelFetch fetchModel, std::function<void()> onChange, FreeSpace freeSpace);

    /// Begins with what is chosen in the settings and not there yet, if the disk has room for all of it. Does
    /// nothing while a download runs.
    void startDownloads();
    const DownloadState& state() const { return state_; }

  private:
    using Queue = std::vector<ModelCatalog::Entry>;

    bool hasRoomFor(const Queue& queue);
    void runQueue(const Queue& queue, std::size_t index);
    void progressed(const Queue& queue, std::size_t index);
    void downloadEnded(const std::optional<Error>& error, const Queue& queue, std::size_t index);

    const ModelFetch fetchModel_;
    const std::function<void()> onChange_;
    const FreeSpace freeSpace_;
    DownloadState state_;
    TransferRate rate_;
    QTimer stallCheck_;
    std::shared_ptr<void> downloader_;
};

}  // namespace parlivo
