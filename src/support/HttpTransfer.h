#pragma once

#include "support/Error.h"

#include <QByteArray>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// One large download through the shared HTTP session, handed on piece by piece: a body of any size takes the
/// same little memory. Redirections are followed; the status is not judged.
class HttpTransfer {
  public:
    struct Request {
        QUrl url;
        /// The longest stretch without any progress, as stated (Clock scales it).
        std::chrono::milliseconds timeout{60'000};
    };

    /// All called on the network thread, which serves every other request too: they must not block for long.
    struct Receiver {
        /// The next bytes of the body. False ends the transfer; `finished` follows.
        std::function<bool(const QByteArray& bytes)> receive;
        /// The server's stated length in bytes, -1 when it states none. Once, before the first bytes and
        /// before the end.
        std::function<void(qint64 length)> announced;
        /// Once: nothing when the whole body arrived, else the transport's failure in Italian (domain
        /// "Network").
        std::function<void(const std::optional<Error>& failure)> finished;
    };

    /// Begins and returns at once. Any thread.
    static std::unique_ptr<HttpTransfer> start(const Request& request, Receiver receiver);

    /// Calls the transfer off: a receiver that has not finished is not called again, except for what it is in
    /// the midst of.
    ~HttpTransfer();
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

  private:
    struct Shared;
    explicit HttpTransfer(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}
    std::shared_ptr<Shared> shared_;
};

}  // namespace parlivo
