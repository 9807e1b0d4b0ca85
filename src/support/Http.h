// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"
#include "support/Error.h"
#include "support/Stop.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QUrl>

#include <chrono>
#include <functional>
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
    /// From the call to the end of the reply, whatever the progress, as stated; nullopt if there is no such
    /// limit.
    std::optional<std::chrono::milliseconds> limit;
    /// A body that grows beyond this many bytes ends the request with a failure. Not for `Http::download`.
    qint64 maximumReplySize = 16 << 20;

    /// The name of a header whose value in the first answer `Http::Receiver` is told.
    QByteArray firstHeader;

    enum class Redirects {
        Follow,  ///< but never from https to http
        Refuse,  ///< the redirection itself is the reply
    };
    Redirects redirects = Redirects::Follow;
};

struct HttpReply {
    /// 0 if no HTTP response arrived.
    int status = 0;
    /// As far as it arrived; empty for `Http::download`.
    QByteArray body;
    /// What went wrong below HTTP, in Italian (domain "Network", libcurl's code): refused, cut off, timed
    /// out, too long, called off. A response of any status is not a failure.
    std::optional<Error> failure;
    /// Whether the failure is that nothing came in time.
    bool timedOut = false;
    /// What the server said of the length of the body, in bytes, -1 if it said nothing.
    qint64 statedLength = -1;

    bool complete() const { return status != 0 && !failure; }
};

/// The program's HTTP client. Requests to the loopback address never use a proxy; others use that of the
/// environment (http_proxy, https_proxy, no_proxy). The certificates are the system's, or those of the file
/// that SSL_CERT_FILE names.
///
/// Every request has connections of its own and is sent once. The calls block, so not on the main thread; a
/// stop of `calledOff`, by default the end of the program, ends them at once. Any number of threads.
namespace Http {

/// Sends a request and waits for its reply.
HttpReply exchange(const HttpRequest& request, const StopToken& calledOff = Clock::ending());

/// What comes before a body.
struct Head {
    /// Of the whole body, as the server says, in bytes; -1 if it says nothing.
    qint64 statedLength = -1;
    /// The header `HttpRequest::firstHeader` of the first answer, be it a redirection; empty without one.
    QByteArray firstHeader;
};

/// Takes the next bytes of a body, on the calling thread; as long as it takes, the sender has to wait, which
/// does not count as a stretch without progress. False ends the request.
using Receiver = std::function<bool(QByteArrayView bytes, const Head& head)>;

/// The same, for a body of any size in little memory. Bodies of redirections are left out.
HttpReply download(const HttpRequest& request, const Receiver& receive,
                   const StopToken& calledOff = Clock::ending());

}  // namespace Http

}  // namespace parlivo
