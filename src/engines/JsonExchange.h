#pragma once

#include "support/Http.h"

#include <QJsonObject>
#include <QUrl>

#include <chrono>
#include <optional>

/// The one way in which engines are asked: a blocking request with a deadline, answered by a JSON object (RFC
/// 8259). The status of a reply does not count, only the shape of its body. Not on the main thread.
namespace parlivo::JsonExchange {

/// A POST request that carries `body`.
HttpRequest post(const QUrl& url, const QJsonObject& body, std::chrono::milliseconds timeout);

/// Sends the request and waits at most `limit` (stated). Nothing when no whole reply came in time or the
/// reply is no JSON object.
std::optional<QJsonObject> send(const HttpRequest& request, std::chrono::milliseconds limit);

}  // namespace parlivo::JsonExchange
