// SPDX-License-Identifier: MIT
#include "dictation/FileEvents.h"

#include <QFile>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace parlivo::bench {

FileEvents::FileEvents(const QString& folder)
    : notifier_(inotify_init1(IN_CLOEXEC)), end_(eventfd(0, EFD_CLOEXEC)) {
    if (inotify_add_watch(notifier_, QFile::encodeName(folder).constData(), IN_CLOSE_WRITE | IN_DELETE) < 0)
        throw std::runtime_error("the folder of the recordings cannot be watched");
    thread_ = std::thread([this] { read(); });
}

FileEvents::~FileEvents() {
    eventfd_write(end_, 1);
    thread_.join();
    close(end_);
    close(notifier_);
}

std::optional<std::chrono::steady_clock::time_point> FileEvents::first(
    Kind kind, const char* suffix, std::chrono::steady_clock::time_point begin) const {
    const std::lock_guard lock(mutex_);
    for (const Event& event : events_)
        if (event.kind == kind && event.moment >= begin && event.name.endsWith(suffix)) return event.moment;
    return std::nullopt;
}

void FileEvents::read() {
    alignas(inotify_event) std::array<char, 4'096> buffer{};
    while (true) {
        std::array<pollfd, 2> sources{{{notifier_, POLLIN, 0}, {end_, POLLIN, 0}}};
        poll(sources.data(), sources.size(), -1);
        if (sources[1].revents != 0) return;
        const ssize_t length = ::read(notifier_, buffer.data(), buffer.size());
        const auto now = std::chrono::steady_clock::now();
        const std::lock_guard lock(mutex_);
        for (ssize_t at = 0; at < length;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + at);
            const Kind kind = (event.mask & IN_DELETE) != 0 ? Kind::Deleted : Kind::Closed;
            events_.push_back({kind, QByteArray(static_cast<const char*>(event.name)), now});
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

}  // namespace parlivo::bench
