// SPDX-License-Identifier: MIT
#include "support/StubServer.h"

#include <QJsonDocument>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace parlivo {

namespace {

const QByteArray lineEnd = "\r\n";
const QByteArray headEnd = "\r\n\r\n";

QByteArray responseHead(int status, const QByteArray& contentType, qint64 length) {
    return "HTTP/1.1 " + QByteArray::number(status) + " Stub\r\nContent-Type: " + contentType +
           "\r\nContent-Length: " + QByteArray::number(length) + "\r\n\r\n";
}

bool sendAll(int socket, QByteArrayView bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            send(socket, bytes.data(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes = bytes.sliced(count);
    }
    return true;
}

/// False at the end of the connection.
bool receiveMore(int socket, QByteArray& pending) {
    std::array<char, 65536> buffer{};
    const ssize_t count = recv(socket, buffer.data(), buffer.size(), 0);
    if (count <= 0) return false;
    pending.append(buffer.data(), count);
    return true;
}

void waitForPeersEnd(int socket) {
    QByteArray ignored;
    while (receiveMore(socket, ignored)) ignored.clear();
}

/// Makes the close that follows a TCP reset.
void lingerNot(int socket) {
    const linger none{1, 0};
    setsockopt(socket, SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

int listenOn(quint16 port) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket, SOMAXCONN) != 0) {
        const int reason = errno;
        close(socket);
        throw std::system_error(reason, std::generic_category(), "StubServer");
    }
    return socket;
}

quint16 portOf(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

}  // namespace

StubReply StubReply::body(const QByteArray& body, int status, const QByteArray& contentType) {
    return {responseHead(status, contentType, body.size()) + body, Manner::Whole, {}};
}

StubReply StubReply::json(const QJsonObject& object, int status) {
    return body(QJsonDocument(object).toJson(QJsonDocument::Compact), status);
}

StubReply StubReply::cutOff(const QByteArray& body, qint64 promised) {
    return {responseHead(200, "application/json", promised) + body, Manner::ThenClose, {}};
}

QByteArray StubServer::Request::header(const QByteArray& name) const {
    const qsizetype start = raw.indexOf(lineEnd + name + ": ");
    if (start < 0) return {};
    const qsizetype value = start + lineEnd.size() + name.size() + 2;
    return raw.mid(value, raw.indexOf(lineEnd, value) - value);
}

StubServer::StubServer(quint16 port, std::map<QByteArray, Script> paths)
    : listener_(listenOn(port)),
      port_(portOf(listener_)),
      paths_(std::move(paths)),
      accepting_([this] { acceptAll(); }) {}

StubServer::~StubServer() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        for (const int socket : sockets_) shutdown(socket, SHUT_RDWR);
    }
    changed_.notify_all();
    shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    for (std::thread& thread : serving_) thread.join();
    close(listener_);
}

void StubServer::on(const QByteArray& path, Script script) {
    const std::lock_guard lock(mutex_);
    paths_[path] = std::move(script);
}

void StubServer::on(const QByteArray& path, std::vector<StubReply> replies) {
    // A script runs under the lock, so this counter needs none of its own.
    on(path, [replies = std::move(replies), next = std::size_t{0}](const Request&) mutable {
        const std::size_t at = std::min(next++, replies.size() - 1);
        return replies[at];
    });
}

std::vector<StubServer::Request> StubServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<StubServer::Request> StubServer::requests(const QByteArray& path) const {
    std::vector<Request> result = requests();
    std::erase_if(result, [&path](const Request& request) { return request.path != path; });
    return result;
}

bool StubServer::waitForRequests(const QByteArray& path, std::size_t count) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [&] {
        const auto isOfPath = [&path](const Request& request) { return request.path == path; };
        return static_cast<std::size_t>(std::ranges::count_if(requests_, isOfPath)) >= count;
    });
}

int StubServer::connections() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(serving_.size());
}

void StubServer::acceptAll() {
    while (true) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex_);
        if (ending_ || socket < 0) {
            if (socket >= 0) close(socket);
            return;
        }
        sockets_.push_back(socket);
        serving_.emplace_back([this, socket] { serve(socket); });
    }
}

void StubServer::serve(int socket) {
    QByteArray pending;
    Request request;
    while (readRequest(socket, pending, request)) {
        if (!perform(socket, replyTo(std::exchange(request, {})))) break;
    }
    const std::lock_guard lock(mutex_);
    std::erase(sockets_, socket);
    close(socket);
}

bool StubServer::readRequest(int socket, QByteArray& pending, Request& request) const {
    while (!pending.contains(headEnd)) {
        if (!receiveMore(socket, pending)) return false;
    }
    const qsizetype bodyStart = pending.indexOf(headEnd) + headEnd.size();
    request.raw = pending.left(bodyStart);
    const qsizetype size = bodyStart + request.header("Content-Length").toLongLong();
    while (pending.size() < size) {
        if (!receiveMore(socket, pending)) return false;
    }
    request.arrived = std::chrono::steady_clock::now();
    request.raw = pending.left(size);
    request.body = request.raw.mid(bodyStart);
    const QList<QByteArray> firstLine = request.raw.left(request.raw.indexOf(lineEnd)).split(' ');
    request.method = firstLine.value(0);
    request.path = firstLine.value(1);
    pending.remove(0, size);
    return true;
}

StubReply StubServer::replyTo(const Request& request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    changed_.notify_all();
    const auto script = paths_.find(request.path);
    return script == paths_.end() ? StubReply::body("not found", 404, "text/plain") : script->second(request);
}

/// False when the connection is over.
bool StubServer::perform(int socket, const StubReply& reply) const {
    using Manner = StubReply::Manner;
    switch (reply.manner) {
        case Manner::Whole:
            return sendAll(socket, reply.bytes);
        case Manner::ThenClose:
            sendAll(socket, reply.bytes);
            return false;
        case Manner::ThenReset:
            sendAll(socket, reply.bytes);
            lingerNot(socket);
            return false;
        case Manner::ThenNothing:
            sendAll(socket, reply.bytes);
            waitForPeersEnd(socket);
            return false;
        case Manner::OneByOne:
            for (const char byte : reply.bytes) {
                if (!rest(reply.pause) || !sendAll(socket, {&byte, 1})) return false;
            }
            return true;
        case Manner::Never:
            waitForPeersEnd(socket);
            return false;
        case Manner::CloseAtOnce:
            return false;
        case Manner::ResetAtOnce:
            lingerNot(socket);
            return false;
        case Manner::WithoutBound:
            sendAll(socket, reply.bytes);
            while (sendAll(socket, QByteArray(1 << 20, ' '))) continue;
            return false;
    }
    return false;
}

/// False when the server is ending.
bool StubServer::rest(std::chrono::milliseconds pause) const {
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, pause, [this] { return ending_; });
}

}  // namespace parlivo
