// SPDX-License-Identifier: MIT
#include "platform/macos/session/LocalSocket.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace parlivo::LocalSocket {

namespace {

using SteadyClock = std::chrono::steady_clock;

bool prepare(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

std::optional<sockaddr_un> addressOf(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    if (static_cast<std::size_t>(name.size()) >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    return address;
}

const sockaddr* generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

/// False with errno when the moment `end` comes first.
bool waitFor(int descriptor, short events, SteadyClock::time_point end) {
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
        pollfd question{descriptor, events, 0};
        const int ready =
            poll(&question, 1, static_cast<int>(std::max(left.count(), decltype(left.count()){0})));
        if (ready > 0) return true;
        if (ready < 0 && errno == EINTR) continue;
        if (ready == 0) errno = ETIMEDOUT;
        return false;
    }
}

}  // namespace

UniqueFd connectTo(const QString& path) {
    const auto address = addressOf(path);
    if (!address) return {};
    UniqueFd descriptor(socket(AF_UNIX, SOCK_STREAM, 0));
    if (!descriptor || !prepare(descriptor.get())) return {};
    // Of this kind of socket a connection is there at once or not at all.
    if (connect(descriptor.get(), generic(*address), sizeof *address) != 0) return {};
    return descriptor;
}

bool sendAll(int descriptor, QByteArray bytes, SteadyClock::time_point end) {
    while (!bytes.isEmpty()) {
        if (!waitFor(descriptor, POLLOUT, end)) return false;
        const ssize_t sent = write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (sent < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (sent > 0) bytes.remove(0, static_cast<qsizetype>(sent));
    }
    return true;
}

std::optional<QByteArray> receiveLine(int descriptor, SteadyClock::time_point end) {
    QByteArray line;
    char byte = 0;
    while (true) {
        if (!waitFor(descriptor, POLLIN, end)) return std::nullopt;
        const ssize_t count = read(descriptor, &byte, 1);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (count == 0) errno = ECONNRESET;
        if (count <= 0) return std::nullopt;
        if (byte == '\n') return line;
        line.append(byte);
    }
}

UniqueFd listenAt(const QString& path) {
    constexpr int waiting = 8;
    const auto address = addressOf(path);
    if (!address) return {};
    UniqueFd descriptor(socket(AF_UNIX, SOCK_STREAM, 0));
    if (!descriptor || !prepare(descriptor.get())) return {};
    unlink(address->sun_path);
    if (bind(descriptor.get(), generic(*address), sizeof *address) != 0) return {};
    if (chmod(address->sun_path, S_IRUSR | S_IWUSR) != 0 || listen(descriptor.get(), waiting) != 0) return {};
    return descriptor;
}

UniqueFd acceptFrom(int listener) {
    UniqueFd descriptor(accept(listener, nullptr, nullptr));
    if (!descriptor || !prepare(descriptor.get())) return {};
    return descriptor;
}

std::optional<QByteArray> ask(const QString& path, const QByteArray& line, int timeout) {
    const auto end = SteadyClock::now() + std::chrono::milliseconds(timeout);
    const UniqueFd descriptor = connectTo(path);
    if (!descriptor) return std::nullopt;
    if (!sendAll(descriptor.get(), line + '\n', end)) return std::nullopt;
    return receiveLine(descriptor.get(), end);
}

}  // namespace parlivo::LocalSocket
