#include "models/ModelCatalog.h"

#include "settings/Config.h"

#include <QFileInfo>

#include <algorithm>

namespace parlivo::ModelCatalog {

namespace {

/// What a file of unknown size must exceed to be taken for a model.
constexpr qint64 plausibleSize = 100'000'000;

const Entry& find(const std::vector<Entry>& tiers, const QString& id, std::size_t fallback) {
    const auto found =
        std::find_if(tiers.begin(), tiers.end(), [&](const Entry& entry) { return entry.id == id; });
    return found == tiers.end() ? tiers[fallback] : *found;
}

}  // namespace

const Entry& asrTier(const QString& id) {
    return find(asrTiers(), id, 1);
}

const Entry& cleanupTier(const QString& id) {
    return find(cleanupTiers(), id, 0);
}

bool isDownloaded(const Entry& entry) {
    if (entry.fileName.isEmpty()) return true;
    const QFileInfo file(Config::modelsDir() + QLatin1Char('/') + entry.fileName);
    if (!file.isFile()) return false;
    return entry.expectedSize >= 1 ? file.size() == entry.expectedSize : file.size() > plausibleSize;
}

}  // namespace parlivo::ModelCatalog
