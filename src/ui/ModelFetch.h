// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "support/Error.h"

#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// The callbacks of a download, on the main thread.
struct FetchObserver {
    std::function<void(double fraction, qint64 written, qint64 total)> onProgress;
    /// Called once, with nullopt if the file is complete and in its place.
    std::function<void(const std::optional<Error>& error)> onCompletion;
};

/// Starts to fetch a model. The download lives as long as the returned pointer and is cancelled when that is
/// released, which the observer may do from its own callbacks.
using ModelFetch =
    std::function<std::shared_ptr<void>(const ModelCatalog::Entry& entry, FetchObserver observer)>;

/// From the model's host, with a Downloader.
std::shared_ptr<void> fetchFromHost(const ModelCatalog::Entry& entry, FetchObserver observer);

}  // namespace parlivo
