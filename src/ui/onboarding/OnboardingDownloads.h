// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "ui/ModelFetch.h"

#include <QCoreApplication>
#include <QString>

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
    double progress = 0;  ///< of the current file, 0 to 1
    qint64 received = 0;  ///< bytes of the current file
    qint64 total = 1;     ///< bytes of the current file
    std::optional<QString> downloadError;
    bool downloadsDone = false;
};

/// Downloads the chosen models of the first run, one after the other. Main thread.
class OnboardingDownloads {
    Q_DECLARE_TR_FUNCTIONS(parlivo::OnboardingDownloads)

  public:
    /// `onChange` is called after every change of the state.
    OnboardingDownloads(ModelFetch fetchModel, std::function<void()> onChange);

    /// Begins with what is chosen in the settings and not there yet. Does nothing while a download runs.
    void startDownloads();
    const DownloadState& state() const { return state_; }

  private:
    using Queue = std::vector<ModelCatalog::Entry>;

    void runQueue(const Queue& queue, std::size_t index);
    void downloadEnded(const std::optional<Error>& error, const Queue& queue, std::size_t index);

    const ModelFetch fetchModel_;
    const std::function<void()> onChange_;
    DownloadState state_;
    std::shared_ptr<void> downloader_;
};

}  // namespace parlivo
