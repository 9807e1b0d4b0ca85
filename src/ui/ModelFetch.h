#pragma once

#include "models/ModelCatalog.h"
#include "support/Error.h"

#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// Who is told about a download, on the main thread.
struct FetchObserver {
    std::function<void(double fraction, qint64 written, qint64 total)> onProgress;
    /// Once: nothing when the file is in its place, whole.
    std::function<void(const std::optional<Error>& error)> onCompletion;
};

/// Begins to fetch a model. What it returns keeps the download alive, and calls it off when let go, which the
/// observer may do from its own callbacks.
using ModelFetch =
    std::function<std::shared_ptr<void>(const ModelCatalog::Entry& entry, FetchObserver observer)>;

/// From the model's host, with a Downloader.
std::shared_ptr<void> fetchFromHost(const ModelCatalog::Entry& entry, FetchObserver observer);

}  // namespace parlivo
