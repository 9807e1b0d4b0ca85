// SPDX-License-Identifier: MIT
#include "app/StaleFiles.h"

#include "audio/StaleRecordings.h"
#include "models/Downloader.h"
#include "update/UpdateInstaller.h"

namespace parlivo {

void removeStaleFiles() {
    removeStaleRecordings();
    removeStaleUpdates();
    Downloader::removeStaleFiles();
}

}  // namespace parlivo
