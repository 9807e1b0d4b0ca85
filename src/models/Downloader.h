// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "support/Error.h"
#include "support/Lifetime.h"
#include "support/Worker.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// Fetches one model file into the models folder: streams it into a temporary file beside its place, checks
/// its exact size and its checksums where there are any, moves it into place. A transport failure or a wrong
/// checksum is tried again from the beginning, three times, 3 s apart.
///
/// One object serves one download; the caller keeps it alive for that long, destroying it calls the download
/// off. Main thread, both callbacks too.
class Downloader {
  public:
    explicit Downloader(ModelCatalog::Entry entry);
    ~Downloader();
    Downloader(const Downloader&) = delete;
    Downloader& operator=(const Downloader&) = delete;

    /// Bytes so far and in all; the fraction may exceed 1 when the total was underestimated.
    std::function<void(double fraction, qint64 written, qint64 total)> onProgress;
    /// Once: nothing when the file is in its place, whole. It may destroy the downloader.
    std::function<void(const std::optional<Error>& error)> onCompletion;

    /// Begins, after deleting what lies in the file's place. Returns at once.
    void start();

    /// Deletes what downloads of a killed program left in the models folder. Any thread; downloads that are
    /// under way, of this program or another, go on.
    static void removeStaleFiles();

  private:
    class Attempt;
    void transferFailed(const Error& failure);
    void complete(const std::optional<Error>& error);

    const ModelCatalog::Entry entry_;
    int retriesLeft_ = 3;
    std::unique_ptr<Worker> worker_;
    Lifetime lifetime_;
};

}  // namespace parlivo
