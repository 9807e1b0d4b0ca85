#include "app/StaleFiles.h"

#include "audio/LeftoverRecordings.h"
#include "models/Downloader.h"
#include "update/UpdateInstaller.h"

namespace parlivo {

void removeStaleFiles() {
    removeLeftoverRecordings();
    removeUpdateLeftovers();
    Downloader::removeLeftovers();
}

}  // namespace parlivo
