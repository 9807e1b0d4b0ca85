// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace parlivo {

/// What a StubServer does with one request.
struct StubReply {
    enum class Manner {
        Whole,         ///< sends everything; the connection stays open
        ThenClose,     ///< sends everything and closes the connection
        ThenReset,     ///< sends everything and breaks the connection off (TCP reset)
        ThenNothing,   ///< sends everything and keeps the connection open, not listening any more
        OneByOne,      ///< sends everything byte by byte, each after `pause`
        Never,         ///< answers nothing and keeps the connection open
        CloseAtOnce,   ///< closes without a word
        ResetAtOnce,   ///< breaks the connection off (TCP reset)
        WithoutBound,  ///< sends `bytes`, then blanks until the peer has enough
    };

    QByteArray bytes;
    Manner manner = Manner::Whole;
    std::chrono::milliseconds pause{0};

    /// A whole HTTP response.
    static StubReply body(const QByteArray& body, int status = 200,
                          const QByteArray& contentType = "application/json");
    static StubReply json(const QJsonObject& object, int status = 200);
    /// A response that promises `promised` bytes of body, sends `body` and closes.
    static StubReply cutOff(const QByteArray& body, qint64 promised);
    static StubReply of(Manner manner) { return {{}, manner, {}}; }
};

/// A scriptable HTTP/1.1 server on the loopback address that keeps every request byte for byte. It runs on
/// threads of its own; all operations may be called from any thread.
class StubServer {
  public:
    struct Request {
        QByteArray raw;  ///< everything, as it came
        QByteArray method;
        QByteArray path;
        QByteArray body;
        std::chrono::steady_clock::time_point arrived;  ///< of its last byte

        /// The value of a header, its name written as the client wrote it.
        QByteArray header(const QByteArray& name) const;
    };
    using Script = std::function<StubReply(const Request&)>;

    /// Listens at once, on a free port for 0, and answers from the first moment as `paths` says. Throws
    /// std::system_error when the port is taken.
    explicit StubServer(quint16 port = 0, std::map<QByteArray, Script> paths = {});
    ~StubServer();
    StubServer(const StubServer&) = delete;
    StubServer& operator=(const StubServer&) = delete;

    quint16 port() const { return port_; }

    /// Answers requests for `path` by `script` from now on; anything else gets 404.
    void on(const QByteArray& path, Script script);
    /// Answers them by one reply after the other; the last one is repeated.
    void on(const QByteArray& path, std::vector<StubReply> replies);
    void on(const QByteArray& path, const StubReply& reply) { on(path, std::vector{reply}); }

    std::vector<Request> requests() const;
    /// Those for one path.
    std::vector<Request> requests(const QByteArray& path) const;
    /// Waits until `count` requests for `path` have arrived; false after 10 s.
    bool waitForRequests(const QByteArray& path, std::size_t count) const;
    /// The connections that were ever opened.
    int connections() const;

  private:
    void acceptAll();
    void serve(int socket);
    bool readRequest(int socket, QByteArray& pending, Request& request) const;
    StubReply replyTo(const Request& request);
    bool perform(int socket, const StubReply& reply) const;
    bool rest(std::chrono::milliseconds pause) const;

    int listener_ = -1;
    quint16 port_ = 0;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::map<QByteArray, Script> paths_;  // under mutex_
    bool ending_ = false;                 // under mutex_
    std::vector<int> sockets_;            // under mutex_: those that are open
    std::vector<std::thread> serving_;    // under mutex_
    std::vector<Request> requests_;       // under mutex_
    std::thread accepting_;
};

}  // namespace parlivo
