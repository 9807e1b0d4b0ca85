#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>
#include <utility>
#include <vector>

namespace parlivo {

/// One HTTP request (RFC 9110).
struct HttpRequest {
    QUrl url;
    QByteArray method = "GET";
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    /// The longest stretch without any progress, as stated (Clock scales it).
    std::chrono::milliseconds timeout{60'000};
    /// A body that grows beyond this many bytes ends the request as a transport error: no reply of ours is
    /// that long.
    qint64 maximumReplySize = 16 << 20;

    /// What a server's redirection is worth.
    enum class Redirects {
        Follow,
        Refuse,  ///< the redirection itself is the reply
    };
    Redirects redirects = Redirects::Follow;
};

struct HttpReply {
    /// 0 when no HTTP response arrived.
    int status = 0;
    /// As far as it arrived.
    QByteArray body;
    /// The transport's failure: refused, cut off, timed out, too long. A response of any status is not a
    /// failure.
    std::optional<QString> transportError;

    bool complete() const { return status != 0 && !transportError; }
};

}  // namespace parlivo
