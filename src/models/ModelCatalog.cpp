// SPDX-License-Identifier: MIT
#include "models/ModelCatalog.h"

#include "settings/Config.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>

namespace parlivo::ModelCatalog {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::ModelCatalog)
};

/// What a file of unknown size must exceed to be taken for a model.
constexpr qint64 plausibleSize = 100'000'000;

const Entry& find(const std::vector<Entry>& tiers, const QString& id, const Setting<QString>& setting) {
    const auto found = std::ranges::find(tiers, id, &Entry::id);
    return found != tiers.end() ? *found : *std::ranges::find(tiers, setting.absent, &Entry::id);
}

QFileInfo fileOf(const Entry& entry) {
    return QFileInfo(Config::modelsDir() + QLatin1Char('/') + entry.fileName);
}

}  // namespace

const Entry& asrTier(const QString& id) {
    return find(asrTiers(), id, Settings::asrTier);
}

const Entry& cleanupTier(const QString& id) {
    return find(cleanupTiers(), id, Settings::cleanupTier);
}

bool isDownloaded(const Entry& entry) {
    if (entry.fileName.isEmpty()) return true;
    const QFileInfo file = fileOf(entry);
    if (!file.isFile()) return false;
    return entry.expectedSize >= 1 ? file.size() == entry.expectedSize : file.size() > plausibleSize;
}

const Entry* standInFor(const Entry& chosen, const std::vector<Entry>& tiers) {
    if (isDownloaded(chosen)) return nullptr;
    const auto found = std::ranges::find_if(
        tiers, [](const Entry& entry) { return !entry.fileName.isEmpty() && isDownloaded(entry); });
    return found == tiers.end() ? nullptr : &*found;
}

std::optional<Fault> faultOf(const Entry& entry) {
    if (isDownloaded(entry)) return std::nullopt;
    const QFileInfo file = fileOf(entry);
    if (!file.isFile()) {
        const QString text = Texts::tr("modello mancante: %1");
        return Fault{text.arg(entry.fileName), text.arg(file.filePath())};
    }
    const QString text = Texts::tr("modello incompleto: %1");
    const QString sizes =
        Texts::tr("%1 (%2 byte invece di %3)").arg(file.filePath()).arg(file.size()).arg(entry.expectedSize);
    return Fault{text.arg(entry.fileName), text.arg(sizes)};
}

}  // namespace parlivo::ModelCatalog
