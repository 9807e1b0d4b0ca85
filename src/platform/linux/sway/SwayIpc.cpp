// SPDX-License-Identifier: MIT
#include "platform/linux/sway/SwayIpc.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <bit>
#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

namespace parlivo::sway {

namespace {

using namespace std::chrono_literals;

/// sway answers in less than a millisecond; one that hangs must not hang the windows for long.
constexpr auto replyTimeout = 2s;

constexpr std::array magic{'i', '3', '-', 'i', 'p', 'c'};
constexpr qsizetype headerSize = magic.size() + 2 * sizeof(std::uint32_t);
/// Far more than any reply to what is asked here.
constexpr std::uint32_t largestPayload = 16U << 20U;

QByteArray bytesOf(std::uint32_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::uint32_t numberAt(const QByteArray& bytes, qsizetype place) {
    std::array<char, sizeof(std::uint32_t)> raw{};
    for (char& byte : raw) byte = bytes.at(place++);
    return std::bit_cast<std::uint32_t>(raw);
}

}  // namespace

std::optional<SwayIpc> SwayIpc::connect(const QString& socketPath) {
    const std::string path = QFile::encodeName(socketPath).toStdString();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
    path.copy(static_cast<char*>(address.sun_path), path.size());
    UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) return std::nullopt;
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return std::nullopt;
    return SwayIpc(std::move(socket));
}

std::optional<QByteArray> SwayIpc::request(std::uint32_t type, const QByteArray& payload) {
    if (!send(type, payload)) return std::nullopt;
    const auto end = std::chrono::steady_clock::now() + replyTimeout;
    while (!broken_) {
        readAvailable();
        while (auto message = takeMessage()) {
            if (message->type == type) return message->payload;
            events_.push_back(*std::move(message));
        }
        const auto left = end - std::chrono::steady_clock::now();
        if (left <= 0s) break;
        pollfd descriptor{socket_.get(), POLLIN, 0};
        poll(&descriptor, 1, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
    }
    return std::nullopt;
}

bool SwayIpc::run(const QByteArray& command) {
    const auto reply = request(MessageType::runCommand, command);
    if (!reply) return false;
    const QJsonArray results = QJsonDocument::fromJson(*reply).array();
    return !results.isEmpty() && results.first().toObject().value(QLatin1String("success")).toBool();
}

/// Requests are short: they fit into the socket's buffer unless sway has not read for very long.
bool SwayIpc::send(std::uint32_t type, const QByteArray& payload) {
    const QByteArray message = QByteArray(magic.data(), magic.size()) +
                               bytesOf(static_cast<std::uint32_t>(payload.size())) + bytesOf(type) + payload;
    const ssize_t sent =
        ::send(socket_.get(), message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL);
    if (sent != message.size()) broken_ = true;
    return !broken_;
}

void SwayIpc::readAvailable() {
    std::array<char, 65536> buffer{};
    while (true) {
        const ssize_t count = recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count > 0) {
            received_.append(buffer.data(), count);
            continue;
        }
        if (count < 0 && errno == EINTR) continue;
        if (count == 0 || errno != EAGAIN) broken_ = true;
        return;
    }
}

std::optional<Message> SwayIpc::takeMessage() {
    if (received_.size() < headerSize) return std::nullopt;
    const auto length = numberAt(received_, magic.size());
    if (!received_.startsWith(QByteArrayView(magic.data(), magic.size())) || length > largestPayload) {
        broken_ = true;
        return std::nullopt;
    }
    if (received_.size() < headerSize + qsizetype{length}) return std::nullopt;
    Message message{numberAt(received_, magic.size() + qsizetype{sizeof length}),
                    received_.sliced(headerSize, length)};
    received_.remove(0, headerSize + qsizetype{length});
    return message;
}

std::vector<Message> SwayIpc::takeEvents() {
    readAvailable();
    while (auto message = takeMessage()) events_.push_back(*std::move(message));
    return std::exchange(events_, {});
}

}  // namespace parlivo::sway
