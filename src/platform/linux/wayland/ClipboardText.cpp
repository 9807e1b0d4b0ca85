// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/ClipboardText.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace parlivo::wayland {

namespace {

using namespace std::chrono_literals;

/// How often the end of the program is looked for meanwhile.
constexpr auto pollInterval = 50ms;

}  // namespace

std::optional<QString> readText(const UniqueFd& pipe, const Clock::Deadline& deadline) {
    QByteArray bytes;
    std::array<char, 65536> buffer{};
    while (!deadline.passed() && !Clock::interrupted()) {
        pollfd descriptor{pipe.get(), POLLIN, 0};
        if (poll(&descriptor, 1, static_cast<int>(pollInterval.count())) <= 0) continue;
        const ssize_t count = read(pipe.get(), buffer.data(), buffer.size());
        if (count == 0) return QString::fromUtf8(bytes);
        if (count < 0 && errno != EINTR && errno != EAGAIN) return std::nullopt;
        if (count > 0) bytes.append(buffer.data(), count);
    }
    return std::nullopt;
}

}  // namespace parlivo::wayland
