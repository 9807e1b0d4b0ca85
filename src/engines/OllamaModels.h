// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/Worker.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

/// What models a local Ollama service offers.
namespace parlivo::OllamaModels {

/// Asks the service and returns at once. `completion` runs on the main thread with the names in ascending
/// order, unless the owner is gone by then; not at all if no proper answer comes within 3 s (a stated time).
/// Letting go of what it returns calls the request off.
std::unique_ptr<Worker> fetchNames(const Lifetime::Token& owner,
                                   std::function<void(const QStringList& names)> completion);

/// The names in an answer of /api/tags, in ascending order; nullopt if it is no such answer.
std::optional<QStringList> names(const QByteArray& answer);

}  // namespace parlivo::OllamaModels
