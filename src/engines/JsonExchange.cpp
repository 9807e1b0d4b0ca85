#include "engines/JsonExchange.h"

#include "engines/EngineReplies.h"
#include "support/HttpSession.h"

#include <QJsonDocument>

namespace parlivo::JsonExchange {

HttpRequest post(const QUrl& url, const QJsonObject& body, std::chrono::milliseconds timeout) {
    HttpRequest request;
    request.url = url;
    request.method = "POST";
    request.headers = {{"Content-Type", "application/json"}};
    request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    request.timeout = timeout;
    return request;
}

std::optional<QJsonObject> send(const HttpRequest& request, std::chrono::milliseconds limit) {
    const auto reply = HttpSession::shared().exchange(request, limit);
    if (!reply) return std::nullopt;
    return EngineReplies::object(reply->body);
}

}  // namespace parlivo::JsonExchange
