// SPDX-License-Identifier: MIT
#include "ui/ModelFetch.h"

#include "models/Downloader.h"

#include <utility>

namespace parlivo {

std::shared_ptr<void> fetchFromHost(const ModelCatalog::Entry& entry, FetchObserver observer) {
    auto downloader = std::make_shared<Downloader>(entry);
    downloader->onProgress = std::move(observer.onProgress);
    downloader->onCompletion = std::move(observer.onCompletion);
    downloader->start();
    return downloader;
}

}  // namespace parlivo
