// SPDX-License-Identifier: MIT
#include "engines/LlamaRunner.h"

#include "engines/EngineAddress.h"
#include "engines/EngineFiles.h"
#include "engines/EngineReplies.h"
#include "engines/JsonExchange.h"
#include "engines/LocalServer.h"
#include "models/ModelCatalog.h"
#include "models/ModelPaths.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"

#include <QFileInfo>
#include <QJsonArray>

namespace parlivo::LlamaRunner {

namespace {

using std::chrono::seconds;

constexpr seconds startLimit{60};
constexpr seconds requestTimeout{90};
constexpr seconds replyLimit{95};

LocalServer& server() {
    static LocalServer instance({EngineAddress::url(EngineAddress::llamaPort, QStringLiteral("/health")),
                                 LocalServer::Accepts::OnlyStatus200, std::chrono::milliseconds(400)});
    return instance;
}

ChildProcess::Program program(const QString& model) {
    return {Config::llamaServerBinary(),
            {QStringLiteral("-m"), model, QStringLiteral("--host"), QStringLiteral("127.0.0.1"),
             QStringLiteral("--port"), QString::number(EngineAddress::llamaPort), QStringLiteral("-c"),
             QStringLiteral("4096")}};
}

/// The chat completion interface that llama-server shares with OpenAI's.
HttpRequest chat(const QString& prompt) {
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("user")},
                              {QStringLiteral("content"), prompt}};
    const QJsonObject body{{QStringLiteral("messages"), QJsonArray{message}},
                           {QStringLiteral("temperature"), 0.1},
                           {QStringLiteral("stream"), false}};
    HttpRequest request = JsonExchange::post(
        EngineAddress::url(EngineAddress::llamaPort, QStringLiteral("/v1/chat/completions")), body);
    request.timeout = requestTimeout;
    request.limit = replyLimit;
    return request;
}

/// What is wrong with the files of a server that does not come up.
void logFaults() {
    if (const auto fault = ModelCatalog::faultOf(Config::chosenCleaner())) Log::info(fault->detail);
    if (const auto fault = engineFault(Config::llamaServerBinary())) Log::info(fault->detail);
}

}  // namespace

void ensureServer() {
    const auto model = Config::cleanerInUse();
    if (!model || (server().isAlive() && server().loadedModel() == model)) return;
    if (server().isLoading(*model)) return;
    try {
        server().start(program(*model), *model);
        Log::info(QStringLiteral("llama-server avviato (%1)").arg(QFileInfo(*model).fileName()));
    } catch (const Error& error) {
        Log::info(QStringLiteral("llama-server non avviabile: ") + error.localizedDescription());
    }
}

std::optional<QString> clean(const QString& prompt) {
    ensureServer();
    if (!server().isStarted()) return std::nullopt;
    if (!server().waitUntilAlive(startLimit)) {
        logFaults();
        return std::nullopt;
    }
    const auto reply = server().ask(chat(prompt));
    return reply ? EngineReplies::chatAnswer(*reply) : std::nullopt;
}

void shutdown() {
    server().terminate();
}

}  // namespace parlivo::LlamaRunner
