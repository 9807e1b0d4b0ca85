#pragma once

#include "support/Http.h"
#include "support/LoopJobs.h"

#include <QNetworkReply>
#include <QThread>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace parlivo {

/// The program's HTTP client. Its requests run on one network thread; those to the loopback address never use
/// a proxy, others use the desktop's.
class HttpSession : private LoopJobs {
  public:
    using Completion = std::function<void(const HttpReply&)>;

    /// Created on first use; lives until `end`.
    static HttpSession& shared();
    /// Aborts what is under way and ends the network thread. Main thread, once no other thread uses the
    /// session.
    static void end();

    /// Sends and returns at once. `completion` runs once on the network thread and must hand off without
    /// blocking; it does not run when the session ends before. A request with a body is never sent twice.
    void send(HttpRequest request, Completion completion);

    /// Asks a server on this machine and waits for its reply at most `limit` (stated; Clock scales it).
    /// Nothing when no whole reply came: refused, cut off, too late, too long, or the program ended; the
    /// request is then called off. Not on the main thread, not on the network thread.
    ///
    /// The request goes over a connection of its own. A redirection, which could lead away from this machine,
    /// is not followed.
    std::optional<HttpReply> exchange(HttpRequest request, std::chrono::milliseconds limit);

    /// Runs `job` on the network thread with the manager of all its requests, for what needs more of it than
    /// `send` gives.
    void onNetworkThread(std::function<void(QNetworkAccessManager&)> job);
    /// Whether Qt reports a failure below HTTP. Statuses of 400 and above are errors to Qt but replies to us.
    static bool isTransportError(QNetworkReply::NetworkError error);

    ~HttpSession() override;
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

  private:
    HttpSession();
    /// A way for a waiting thread to call its request off.
    struct Ticket;
    void begin(const HttpRequest& request, const Completion& completion);

    QThread thread_;
    // Lives on the network thread.
    QNetworkAccessManager* manager_ = nullptr;
};

}  // namespace parlivo
