// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

/// The built-in cleanup engine: a local `llama-server` on 127.0.0.1:8766 with the model of the chosen tier,
/// kept running between dictations.
namespace parlivo::LlamaRunner {

/// Makes sure that a server with the current model runs; does nothing when no tier with a model is chosen.
/// Never fails: what goes wrong is logged. Blocks, so pipeline thread only.
void ensureServer();

/// The model's answer to `prompt`, as it came, or nothing when there is no model, no server or no proper
/// reply. Blocks up to 60 s for the server to come up and 95 s for its reply (stated times), so pipeline
/// thread only.
std::optional<QString> clean(const QString& prompt);

/// Ends the server that `ensureServer` started, if any; the next use starts it again. Returns at once. Any
/// thread.
void shutdown();

}  // namespace parlivo::LlamaRunner
