// SPDX-License-Identifier: MIT
#include "models/ModelPaths.h"

#include "platform/Platform.h"
#include "settings/Config.h"

#include <QFileInfo>

namespace parlivo::Config {

namespace {

const QString bundledModel = QStringLiteral("ggml-model.bin");
const QString developersModel = QStringLiteral("Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin");

QString inModelsDir(const ModelCatalog::Entry& entry) {
    return modelsDir() + QLatin1Char('/') + entry.fileName;
}

}  // namespace

const ModelCatalog::Entry& chosenRecogniser() {
    return ModelCatalog::asrTier(get(Settings::asrTier));
}

const ModelCatalog::Entry& chosenCleaner() {
    return ModelCatalog::cleanupTier(get(Settings::cleanupTier));
}

QString whisperModel() {
    const ModelCatalog::Entry& entry = chosenRecogniser();
    return ModelCatalog::isDownloaded(entry) ? inModelsDir(entry)
                                             : resourceOrHome(bundledModel, developersModel);
}

std::optional<QString> llamaModel() {
    const ModelCatalog::Entry& entry = chosenCleaner();
    if (entry.fileName.isEmpty()) return std::nullopt;
    return inModelsDir(entry);
}

QString recogniserInUse() {
    const QString model = whisperModel();
    const auto* const standIn = QFileInfo::exists(model)
                                    ? nullptr
                                    : ModelCatalog::standInFor(chosenRecogniser(), ModelCatalog::asrTiers());
    return standIn ? inModelsDir(*standIn) : model;
}

std::optional<QString> cleanerInUse() {
    const ModelCatalog::Entry& entry = chosenCleaner();
    if (entry.fileName.isEmpty()) return std::nullopt;
    const auto* const standIn = ModelCatalog::standInFor(entry, ModelCatalog::cleanupTiers());
    return inModelsDir(standIn ? *standIn : entry);
}

bool hasUsableModel() {
    return ModelCatalog::isDownloaded(chosenRecogniser()) || QFileInfo::exists(whisperModel());
}

}  // namespace parlivo::Config
