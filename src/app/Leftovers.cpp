#include "app/Leftovers.h"

#include "audio/LeftoverRecordings.h"
#include "models/Downloader.h"
#include "update/UpdateInstaller.h"

namespace parlivo {

void removeLeftovers() {
    removeLeftoverRecordings();
    removeUpdateLeftovers();
    Downloader::removeLeftovers();
}

}  // namespace parlivo
