// SPDX-License-Identifier: MIT
#include "engines/OllamaModels.h"

#include "settings/Config.h"
#include "support/Http.h"
#include "support/MainQueue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace parlivo::OllamaModels {

using namespace std::chrono_literals;

std::unique_ptr<Worker> fetchNames(const Lifetime::Token& owner,
                                   std::function<void(const QStringList& names)> completion) {
    HttpRequest request;
    request.url = Config::ollamaURL();
    request.url.setPath(QStringLiteral("/api/tags"));
    request.timeout = 3s;
    const auto ask = [request, owner, completion = std::move(completion)](const StopToken& calledOff) {
        const HttpReply reply = Http::exchange(request, calledOff);
        const auto found = reply.complete() ? names(reply.body) : std::nullopt;
        if (found) MainQueue::async(owner, [completion, names = *found] { completion(names); });
    };
    return std::make_unique<Worker>(QStringLiteral("parlivo.ollama"), ask);
}

std::optional<QStringList> names(const QByteArray& answer) {
    const QJsonValue models = QJsonDocument::fromJson(answer).object().value(QLatin1String("models"));
    if (!models.isArray()) return std::nullopt;
    QStringList found;
    const QJsonArray list = models.toArray();
    for (const auto& model : list) {
        const QJsonValue name = model.toObject().value(QLatin1String("name"));
        if (name.isString()) found.append(name.toString());
    }
    found.sort();
    return found;
}

}  // namespace parlivo::OllamaModels
