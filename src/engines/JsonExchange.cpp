// SPDX-License-Identifier: MIT
#include "engines/JsonExchange.h"

#include "engines/EngineReplies.h"

#include <QJsonDocument>

namespace parlivo::JsonExchange {

HttpRequest post(const QUrl& url, const QJsonObject& body) {
    HttpRequest request;
    request.url = url;
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return request;
}

HttpReply send(HttpRequest request) {
    request.redirects = HttpRequest::Redirects::Refuse;
    return Http::exchange(request);
}

std::optional<QJsonObject> object(const HttpReply& reply) {
    return reply.complete() ? EngineReplies::object(reply.body) : std::nullopt;
}

}  // namespace parlivo::JsonExchange
