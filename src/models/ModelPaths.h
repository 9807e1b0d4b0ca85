// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"

#include <QString>

#include <optional>

/// The part of Config that resolves the chosen tiers to files. Recomputed on each call. Any thread.
namespace parlivo::Config {

/// The tiers that are chosen.
const ModelCatalog::Entry& chosenRecogniser();
const ModelCatalog::Entry& chosenCleaner();

/// The recognition model: the chosen tier's file when it is complete, else the bundle's own, else the
/// developer's.
QString whisperModel();

/// The built-in cleanup model of the chosen tier, whether the file exists or not; nullopt for the tier
/// without a model.
std::optional<QString> llamaModel();

/// The models that dictations use: those above, but as long as a chosen tier's file is not there and nothing
/// else was found, the file of another tier that is, which was in use before.
QString recogniserInUse();
std::optional<QString> cleanerInUse();

/// Whether dictation has a recognition model to work with.
bool hasUsableModel();

}  // namespace parlivo::Config
