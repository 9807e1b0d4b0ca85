#include "engines/JsonExchange.h"

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
    const QJsonDocument document = QJsonDocument::fromJson(reply->body);
    if (!document.isObject()) return std::nullopt;
    return document.object();
}

std::optional<QString> text(const QJsonValue& value) {
    if (!value.isString()) return std::nullopt;
    QString string = value.toString();
    if (!string.isValidUtf16()) return std::nullopt;
    return string;
}

}  // namespace parlivo::JsonExchange
