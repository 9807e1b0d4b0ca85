// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseConnection.h"

#include "platform/linux/sound/PulseReason.h"

#include <algorithm>

namespace parlivo {

namespace {

struct ProplistRelease {
    void operator()(pa_proplist* list) const { pa_proplist_free(list); }
};

/// How mixers show the program.
std::unique_ptr<pa_proplist, ProplistRelease> identity() {
    std::unique_ptr<pa_proplist, ProplistRelease> list(pa_proplist_new());
    pa_proplist_sets(list.get(), PA_PROP_APPLICATION_NAME, "Parlivo");
    pa_proplist_sets(list.get(), PA_PROP_APPLICATION_ID, "it.parlivo.Parlivo");
    pa_proplist_sets(list.get(), PA_PROP_APPLICATION_ICON_NAME, "it.parlivo.Parlivo");
    return list;
}

/// Wakes the waiting thread at a given moment. Its callback writes to it: an object must not be const.
class DeadlineTimer {
  public:
    DeadlineTimer(pa_context* context, pa_threaded_mainloop* loop, Clock::TimePoint end)
        : loop_(loop), event_(pa_context_rttime_new(context, pulseTime(end), &DeadlineTimer::expire, this)) {}
    ~DeadlineTimer() {
        pa_mainloop_api* const api = pa_threaded_mainloop_get_api(loop_);
        if (event_) api->time_free(event_);
    }
    DeadlineTimer(const DeadlineTimer&) = delete;
    DeadlineTimer& operator=(const DeadlineTimer&) = delete;

    bool hasExpired() { return expired_ || !event_; }

  private:
    static pa_usec_t pulseTime(Clock::TimePoint moment) {
        using std::chrono::microseconds;
        const auto left = std::chrono::duration_cast<microseconds>(moment - Clock::now());
        return pa_rtclock_now() + static_cast<pa_usec_t>(std::max(left, microseconds::zero()).count());
    }
    static void expire(pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
        auto* const timer = static_cast<DeadlineTimer*>(self);
        timer->expired_ = true;
        pa_threaded_mainloop_signal(timer->loop_, 0);
    }

    pa_threaded_mainloop* const loop_;
    bool expired_ = false;
    pa_time_event* const event_;
};

}  // namespace

PulseConnection::Lock::Lock(const PulseConnection& connection) : loop_(connection.loop_.get()) {
    pa_threaded_mainloop_lock(loop_);
}

PulseConnection::Lock::~Lock() {
    pa_threaded_mainloop_unlock(loop_);
}

std::unique_ptr<PulseConnection> PulseConnection::open(Clock::TimePoint end) {
    std::unique_ptr<PulseConnection> connection(new PulseConnection);
    if (!connection->connect(end)) return nullptr;
    return connection;
}

bool PulseConnection::connect(Clock::TimePoint end) {
    loop_.reset(pa_threaded_mainloop_new());
    if (!loop_) return false;
    pa_threaded_mainloop_set_name(loop_.get(), "parlivo.audio");
    context_.reset(
        pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop_.get()), nullptr, identity().get()));
    if (!context_ || pa_threaded_mainloop_start(loop_.get()) < 0) return false;

    const Lock lock(*this);
    pa_context_set_state_callback(context_.get(), &PulseConnection::contextChanged, this);
    // libpulse can start a missing server itself, but blocks without limit while it does. Sessions start
    // theirs (a systemd socket, an autostart entry), and the caller may be the thread of the windows.
    if (pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) return false;
    waitUntil(end, [this] { return isAlive() || !PA_CONTEXT_IS_GOOD(pa_context_get_state(context_.get())); });
    return isAlive();
}

PulseConnection::~PulseConnection() {
    if (!context_) return;
    {
        const Lock lock(*this);
        pa_context_set_state_callback(context_.get(), nullptr, nullptr);
        pa_context_disconnect(context_.get());
        context_.reset();
    }
    pa_threaded_mainloop_stop(loop_.get());
}

void PulseConnection::contextChanged(pa_context* context, void* self) {
    auto* const connection = static_cast<PulseConnection*>(self);
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)) && connection->onLost) connection->onLost();
    connection->wake();
}

bool PulseConnection::waitUntil(Clock::TimePoint end, const std::function<bool()>& condition) const {
    DeadlineTimer timer(context_.get(), loop_.get(), end);
    while (!condition()) {
        if (timer.hasExpired()) return false;
        pa_threaded_mainloop_wait(loop_.get());
    }
    return true;
}

void PulseConnection::wake() const {
    pa_threaded_mainloop_signal(loop_.get(), 0);
}

Error PulseConnection::error(int code) {
    return {QStringLiteral("PulseAudio"), code, pulseReason(code)};
}

}  // namespace parlivo
