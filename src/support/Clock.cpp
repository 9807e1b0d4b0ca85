// SPDX-License-Identifier: MIT
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

/// All waits of the process use this one condition variable, so that the end of the program reaches all of
/// them. There are few waits (one for each queue), so waking all of them costs little.
struct WaitState {
    std::mutex mutex;
    std::condition_variable changed;
    StopSource ending;  // under mutex

    bool interrupted() const { return ending.stopRequested(); }
};

WaitState& waitState() {
    static WaitState instance;
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
    std::unique_lock lock(waitState().mutex);
    return !waitState().changed.wait_until(lock, moment, [] { return waitState().interrupted(); });
}

void interruptAll() {
    {
        const std::lock_guard lock(waitState().mutex);
        waitState().ending.requestStop();
    }
    waitState().changed.notify_all();
}

bool interrupted() {
    const std::lock_guard lock(waitState().mutex);
    return waitState().interrupted();
}

StopToken ending() {
    const std::lock_guard lock(waitState().mutex);
    return waitState().ending.token();
}

void resume() {
    const std::lock_guard lock(waitState().mutex);
    waitState().ending = StopSource();
}

// A signal uses the lock of the shared wait state, so that "raised or interrupted" is one condition.
void Signal::raise() {
    {
        const std::lock_guard lock(waitState().mutex);
        raised_ = true;
    }
    waitState().changed.notify_all();
}

bool Signal::waitUntil(TimePoint end) {
    std::unique_lock lock(waitState().mutex);
    waitState().changed.wait_until(lock, end, [this] { return raised_ || waitState().interrupted(); });
    return raised_;
}

bool Signal::wait() {
    std::unique_lock lock(waitState().mutex);
    waitState().changed.wait(lock, [this] { return raised_ || waitState().interrupted(); });
    return raised_;
}

void Signal::waitUninterrupted() {
    std::unique_lock lock(waitState().mutex);
    waitState().changed.wait(lock, [this] { return raised_; });
}

}  // namespace parlivo::Clock
