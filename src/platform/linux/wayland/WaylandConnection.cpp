// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/WaylandConnection.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace parlivo::wayland {

namespace {

/// A receiver that closes its end early must not end the program: write(2) then fails with EPIPE.
void blockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

std::unique_ptr<WaylandConnection> WaylandConnection::open() {
    Display display(wl_display_connect(nullptr));
    UniqueFd wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!display || !wakeUp) return nullptr;
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(std::move(display), std::move(wakeUp)));
}

WaylandConnection::WaylandConnection(Display display, UniqueFd wakeUp)
    : display_(std::move(display)), wakeUp_(std::move(wakeUp)), thread_([this] { loop(); }) {}

WaylandConnection::~WaylandConnection() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake();
    thread_.join();
    if (registry_) wl_registry_destroy(registry_);
}

bool WaylandConnection::run(const Job& job) {
    std::unique_lock lock(mutex_);
    if (broken_) return false;
    jobs_.push_back(&job);
    wake();
    const auto waits = [&] { return std::ranges::find(jobs_, &job) != jobs_.end(); };
    changed_.wait(lock, [&] { return !waits() || broken_; });
    if (!waits()) return true;
    std::erase(jobs_, &job);
    return false;
}

bool WaylandConnection::roundTrip() {
    return wl_display_roundtrip(display_.get()) >= 0;
}

void WaylandConnection::send(UniqueFd pipe, const QByteArray& bytes) {
    fcntl(pipe.get(), F_SETFL, fcntl(pipe.get(), F_GETFL) | O_NONBLOCK);
    transfers_.push_back({std::move(pipe), bytes, 0});
}

void WaylandConnection::loop() {
    blockBrokenPipeSignal();
    listGlobals();
    while (handleEvents()) {
        runJobs();
        wl_display_flush(display_.get());
        const std::lock_guard lock(mutex_);
        if (ending_) break;
    }
    const std::lock_guard lock(mutex_);
    broken_ = true;
    changed_.notify_all();
}

void WaylandConnection::listGlobals() {
    static const wl_registry_listener listener{
        .global =
            [](void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version) {
                static_cast<WaylandConnection*>(data)->globals_.emplace(interface, Global{name, version});
            },
        .global_remove = [](void*, wl_registry*, std::uint32_t) {},
    };
    registry_ = wl_display_get_registry(display_.get());
    wl_registry_add_listener(registry_, &listener, this);
    roundTrip();
    wake();  // jobs may have come meanwhile
}

bool WaylandConnection::handleEvents() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        if (wl_display_dispatch_pending(display_.get()) < 0) return false;
    }
    wl_display_flush(display_.get());
    waitForInput();
    return wl_display_dispatch_pending(display_.get()) >= 0 && wl_display_get_error(display_.get()) == 0;
}

/// Between wl_display_prepare_read and the dispatch.
void WaylandConnection::waitForInput() {
    std::vector<pollfd> descriptors{{wl_display_get_fd(display_.get()), POLLIN, 0},
                                    {wakeUp_.get(), POLLIN, 0}};
    for (const Transfer& transfer : transfers_) descriptors.push_back({transfer.pipe.get(), POLLOUT, 0});
    constexpr int forever = -1;
    poll(descriptors.data(), descriptors.size(), forever);
    if (descriptors[0].revents != 0)
        wl_display_read_events(display_.get());
    else
        wl_display_cancel_read(display_.get());
    eventfd_t ignored = 0;
    if (descriptors[1].revents != 0) eventfd_read(wakeUp_.get(), &ignored);
    continueTransfers();
}

void WaylandConnection::continueTransfers() {
    std::erase_if(transfers_, [](Transfer& transfer) {
        const qsizetype left = transfer.bytes.size() - transfer.sent;
        const ssize_t count = ::write(transfer.pipe.get(), transfer.bytes.constData() + transfer.sent,
                                      static_cast<std::size_t>(left));
        if (count < 0) return errno != EAGAIN && errno != EINTR;
        transfer.sent += count;
        return transfer.sent == transfer.bytes.size();
    });
}

void WaylandConnection::runJobs() {
    std::unique_lock lock(mutex_);
    while (!jobs_.empty()) {
        const Job* const job = jobs_.front();
        lock.unlock();
        (*job)();
        wl_display_flush(display_.get());
        lock.lock();
        jobs_.pop_front();
        changed_.notify_all();
    }
}

void WaylandConnection::wake() const {
    eventfd_write(wakeUp_.get(), 1);
}

void* WaylandConnection::bindGlobal(const wl_interface& interface, std::uint32_t version) {
    const auto found = globals_.find(std::string_view(interface.name));
    if (found == globals_.end()) return nullptr;
    const auto [name, offered] = found->second;
    return wl_registry_bind(registry_, name, &interface, std::min(version, offered));
}

}  // namespace parlivo::wayland
