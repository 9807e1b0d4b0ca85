#include "support/Clock.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <utility>

namespace parlivo::Clock {

namespace {

std::atomic<double> scale{1.0};

struct Observation {
    std::mutex mutex;
    std::function<void(std::chrono::milliseconds)> observer;  // under mutex
};

Observation& observation() {
    static Observation instance;
    return instance;
}

void observe(std::chrono::milliseconds stated) {
    const std::lock_guard lock(observation().mutex);
    if (observation().observer) observation().observer(stated);
}

/// Every wait of the process sleeps on this one pair, so that the end of the program reaches all of them. The
/// waits are few (one a queue), so a shared wake-up costs nothing.
struct Bell {
    std::mutex mutex;
    std::condition_variable rung;
    bool interrupted = false;  // under mutex
};

Bell& bell() {
    static Bell instance;
    return instance;
}

}  // namespace

TimePoint now() {
    return std::chrono::steady_clock::now();
}

std::chrono::milliseconds scaled(std::chrono::milliseconds stated) {
    observe(stated);
    const double factor = scale.load();
    if (factor == 1.0) return stated;
    return std::chrono::milliseconds(static_cast<std::int64_t>(static_cast<double>(stated.count()) * factor));
}

void setScale(double factor) {
    scale.store(factor);
}

void setObserver(std::function<void(std::chrono::milliseconds)> observer) {
    const std::lock_guard lock(observation().mutex);
    observation().observer = std::move(observer);
}

bool sleepFor(std::chrono::milliseconds stated) {
    return sleepUntil(now() + scaled(stated));
}

bool sleepUntil(TimePoint moment) {
    std::unique_lock lock(bell().mutex);
    return !bell().rung.wait_until(lock, moment, [] { return bell().interrupted; });
}

void interruptAll() {
    {
        const std::lock_guard lock(bell().mutex);
        bell().interrupted = true;
    }
    bell().rung.notify_all();
}

bool interrupted() {
    const std::lock_guard lock(bell().mutex);
    return bell().interrupted;
}

void resume() {
    const std::lock_guard lock(bell().mutex);
    bell().interrupted = false;
}

// A signal shares the bell's lock: that makes "raised or interrupted" one condition to wait for.
void Signal::raise() {
    {
        const std::lock_guard lock(bell().mutex);
        raised_ = true;
    }
    bell().rung.notify_all();
}

bool Signal::waitUntil(TimePoint end) {
    std::unique_lock lock(bell().mutex);
    bell().rung.wait_until(lock, end, [this] { return raised_ || bell().interrupted; });
    return raised_;
}

bool Signal::wait() {
    std::unique_lock lock(bell().mutex);
    bell().rung.wait(lock, [this] { return raised_ || bell().interrupted; });
    return raised_;
}

void Signal::waitUninterrupted() {
    std::unique_lock lock(bell().mutex);
    bell().rung.wait(lock, [this] { return raised_; });
}

}  // namespace parlivo::Clock
