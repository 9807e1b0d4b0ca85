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

/// The compositor's answer to wl_display.sync, which is still to come.
class WaylandConnection::Echo {
  public:
    Echo(WaylandConnection& connection, Job job)
        : connection_(connection), job_(std::move(job)), handle_(wl_display_sync(connection.display_.get())) {
        static const wl_callback_listener listener{
            .done = [](void* data, wl_callback*, std::uint32_t) { static_cast<Echo*>(data)->arrive(); }};
        wl_callback_add_listener(handle_, &listener, this);
    }
    ~Echo() { wl_callback_destroy(handle_); }
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

  private:
    void arrive() {
        const Job job = std::move(job_);
        connection_.echoes_.remove_if([this](const Echo& echo) { return &echo == this; });
        job();
    }

    WaylandConnection& connection_;
    Job job_;
    wl_callback* handle_;
};

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
    echoes_.clear();
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

bool WaylandConnection::isBroken() {
    const std::lock_guard lock(mutex_);
    return broken_;
}

bool WaylandConnection::roundTrip() {
    return wl_display_roundtrip(display_.get()) >= 0;
}

void WaylandConnection::afterRequests(Job job) {
    echoes_.emplace_back(*this, std::move(job));
}

void WaylandConnection::send(UniqueFd pipe, const QByteArray& bytes) {
    fcntl(pipe.get(), F_SETFL, fcntl(pipe.get(), F_GETFL) | O_NONBLOCK);
    transfers_.push_back({std::move(pipe), bytes, 0});
}

void WaylandConnection::loop() {
    blockBrokenPipeSignal();
    listGlobals();
    bool isEnding = false;
    while (!isEnding && handleEvents()) {
        runJobs();
        wl_display_flush(display_.get());
        const std::lock_guard lock(mutex_);
        isEnding = ending_;
    }
    if (!isEnding && onBreak_) onBreak_();
    const std::lock_guard lock(mutex_);
    broken_ = true;
    changed_.notify_all();
}

void WaylandConnection::listGlobals() {
    static const wl_registry_listener listener{
        .global =
            [](void* data, wl_registry*, std::uint32_t name, const char* interface, std::uint32_t version) {
                static_cast<WaylandConnection*>(data)->globalAdded(name, interface, version);
            },
        .global_remove =
            [](void* data, wl_registry*, std::uint32_t name) {
                static_cast<WaylandConnection*>(data)->globalRemoved(name);
            },
    };
    registry_ = wl_display_get_registry(display_.get());
    wl_registry_add_listener(registry_, &listener, this);
    roundTrip();
    wake();  // jobs may have come meanwhile
}

void WaylandConnection::globalAdded(std::uint32_t name, const char* interface, std::uint32_t version) {
    globals_[name] = {.interface = interface, .version = version};
    if (watch_.interface && globals_[name].interface == watch_.interface->name) watch_.added(name);
}

void WaylandConnection::globalRemoved(std::uint32_t name) {
    const auto found = globals_.find(name);
    if (found == globals_.end()) return;
    const bool watched = watch_.interface && found->second.interface == watch_.interface->name;
    globals_.erase(found);
    if (watched) watch_.removed(name);
}

void WaylandConnection::watchGlobals(GlobalWatch watch) {
    watch_ = std::move(watch);
    if (!watch_.interface) return;
    for (const auto& [name, global] : globals_) {
        if (global.interface == watch_.interface->name) watch_.added(name);
    }
}

bool WaylandConnection::handleEvents() {
    while (wl_display_prepare_read(display_.get()) != 0) {
        if (wl_display_dispatch_pending(display_.get()) < 0) return false;
    }
    const bool socketFull = wl_display_flush(display_.get()) < 0 && errno == EAGAIN;
    waitForEvents(socketFull ? Unsent::Some : Unsent::None);
    return wl_display_dispatch_pending(display_.get()) >= 0 && wl_display_get_error(display_.get()) == 0;
}

/// Between wl_display_prepare_read and the dispatch. A compositor that is slow to read takes the unsent
/// requests later.
void WaylandConnection::waitForEvents(Unsent unsent) {
    constexpr short both = POLLIN | POLLOUT;
    std::vector<pollfd> descriptors{
        {wl_display_get_fd(display_.get()), unsent == Unsent::Some ? both : short{POLLIN}, 0},
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

std::optional<std::uint32_t> WaylandConnection::firstGlobal(const wl_interface& interface) const {
    const auto found = std::ranges::find_if(
        globals_, [&](const auto& entry) { return entry.second.interface == interface.name; });
    return found == globals_.end() ? std::nullopt : std::optional(found->first);
}

void* WaylandConnection::bindGlobal(std::uint32_t name, const wl_interface& interface,
                                    std::uint32_t version) {
    const auto found = globals_.find(name);
    if (found == globals_.end()) return nullptr;
    return wl_registry_bind(registry_, name, &interface, std::min(version, found->second.version));
}

bool WaylandConnection::offers(const wl_interface& interface) {
    bool found = false;
    run([&] { found = firstGlobal(interface).has_value(); });
    return found;
}

}  // namespace parlivo::wayland
