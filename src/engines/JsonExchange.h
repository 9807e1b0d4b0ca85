// SPDX-License-Identifier: MIT
#pragma once

#include "support/Http.h"

#include <QJsonObject>
#include <QUrl>

#include <optional>

/// The one way in which engines are asked: a blocking request, answered by a JSON object (RFC 8259). The
/// status of a reply does not count, only the shape of its body. Not on the main thread.
namespace parlivo::JsonExchange {

/// A POST request that carries `body`.
HttpRequest post(const QUrl& url, const QJsonObject& body);

/// Sends the request and waits for its reply. A redirection, which could lead away from this machine, is not
/// followed.
HttpReply send(HttpRequest request);

/// nullopt if the reply is not whole or no JSON object.
std::optional<QJsonObject> object(const HttpReply& reply);

}  // namespace parlivo::JsonExchange
