// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/InputMethod.h"

#include <input-method-client.h>

#include <chrono>
#include <utility>

namespace parlivo::wayland {

namespace {

using namespace std::chrono_literals;

/// How long the compositor, which answers in less than a millisecond, may take.
constexpr auto compositorTimeout = 5s;
/// How often a commit is sent again because the field changed at that moment.
constexpr int mostAttempts = 50;

}  // namespace

std::unique_ptr<InputMethod> InputMethod::make(WaylandConnection& connection) {
    std::unique_ptr<InputMethod> method(new InputMethod(connection));
    bool started = false;
    connection.run([&] { started = method->start(); });
    return started ? std::move(method) : nullptr;
}

InputMethod::~InputMethod() {
    const auto destroyAll = [this] {
        alive_.reset();
        connection_.onBreak(nullptr);
        if (handle_) zwp_input_method_v2_destroy(handle_);
        if (manager_) zwp_input_method_manager_v2_destroy(manager_);
    };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_.run(destroyAll)) destroyAll();
}

bool InputMethod::start() {
    auto* const seat = connection_.bind<wl_seat>(wl_seat_interface, 1);
    manager_ = connection_.bind<zwp_input_method_manager_v2>(zwp_input_method_manager_v2_interface, 1);
    if (!seat || !manager_) {
        if (seat) wl_seat_destroy(seat);
        return false;
    }
    static const zwp_input_method_v2_listener listener{
        .activate = [](void* data,
                       zwp_input_method_v2*) { static_cast<InputMethod*>(data)->nextActive_ = true; },
        .deactivate = [](void* data,
                         zwp_input_method_v2*) { static_cast<InputMethod*>(data)->nextActive_ = false; },
        .surrounding_text = [](void*, zwp_input_method_v2*, const char*, std::uint32_t, std::uint32_t) {},
        .text_change_cause = [](void*, zwp_input_method_v2*, std::uint32_t) {},
        .content_type = [](void*, zwp_input_method_v2*, std::uint32_t, std::uint32_t) {},
        .done = [](void* data, zwp_input_method_v2*) { static_cast<InputMethod*>(data)->done(); },
        .unavailable =
            [](void* data, zwp_input_method_v2*) {
                auto& method = *static_cast<InputMethod*>(data);
                method.tell([&] { method.presence_ = Presence::Refused; });
            },
    };
    handle_ = zwp_input_method_manager_v2_get_input_method(manager_, seat);
    zwp_input_method_v2_add_listener(handle_, &listener, this);
    // Whoever waits for the compositor goes other ways at once.
    connection_.onBreak([this] {
        tell([this] {
            presence_ = Presence::Refused;
            if (fate_ == Fate::Unknown) fate_ = Fate::Late;
        });
    });
    wl_seat_destroy(seat);
    return connection_.roundTrip();
}

void InputMethod::done() {
    ++serial_;
    tell([this] {
        if (presence_ != Presence::Refused) presence_ = nextActive_ ? Presence::Active : Presence::Inactive;
        if (fate_ == Fate::Accepted) answered_ = true;
    });
}

void InputMethod::tell(const std::function<void()>& change) {
    const std::lock_guard lock(mutex_);
    change();
    if (const auto waiting = std::exchange(waiting_, nullptr)) waiting->raise();
}

bool InputMethod::waitFor(const std::function<bool()>& condition, Clock::TimePoint end) {
    std::unique_lock lock(mutex_);
    while (!condition()) {
        const auto change = waiting_ = std::make_shared<Clock::Signal>();
        lock.unlock();
        if (!change->waitUntil(end)) return false;
        lock.lock();
    }
    return true;
}

InputMethod::Presence InputMethod::presence() {
    const std::lock_guard lock(mutex_);
    return presence_;
}

bool InputMethod::waitUntilActive(Clock::TimePoint end) {
    waitFor([this] { return presence_ != Presence::Inactive; }, end);
    return presence() == Presence::Active;
}

bool InputMethod::waitForAnswer(Clock::TimePoint end) {
    return waitFor([this] { return answered_ || presence_ == Presence::Refused; }, end);
}

InputMethod::Commit InputMethod::commit(const QByteArray& text) {
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        tell([this] { fate_ = Fate::Unknown; });
        if (!connection_.run([&] { send(text); })) break;
        if (!waitFor([this] { return fate_ != Fate::Unknown; }, Clock::now() + compositorTimeout)) break;
        const std::lock_guard lock(mutex_);
        if (fate_ == Fate::Accepted) return Commit::Accepted;
        if (fate_ == Fate::NoField) return Commit::NoField;
    }
    return Commit::Failed;
}

void InputMethod::send(const QByteArray& text) {
    if (presence() != Presence::Active) return tell([this] { fate_ = Fate::NoField; });
    zwp_input_method_v2_commit_string(handle_, text.constData());
    zwp_input_method_v2_commit(handle_, serial_);
    connection_.afterRequests([this, sentAt = serial_, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        tell([&] {
            fate_ = serial_ == sentAt ? Fate::Accepted : Fate::Late;
            if (fate_ == Fate::Accepted) answered_ = false;
        });
    });
}

}  // namespace parlivo::wayland
