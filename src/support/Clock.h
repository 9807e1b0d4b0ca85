// SPDX-License-Identifier: MIT
#pragma once

#include "support/Stop.h"

#include <chrono>
#include <functional>

/// The waits of the program, in one place: the end of the program cuts them short, and a test runs them on a
/// fast clock. QWaitCondition and QDeadlineTimer know neither that end nor a scale.
///
/// All times are of the monotonic clock. Every operation may be called from any thread; none may be used on
/// the main thread for anything but the end of the program.
namespace parlivo::Clock {

using TimePoint = std::chrono::steady_clock::time_point;
using Duration = std::chrono::steady_clock::duration;

TimePoint now();

/// A stated duration as it is really waited for: multiplied by the scale (1 unless a test says otherwise).
std::chrono::milliseconds scaled(std::chrono::milliseconds stated);

/// Makes a stated second last `factor` seconds; for tests of long deadlines.
void setScale(double factor);

/// Sets a function that is called with every requested duration before it is scaled, on the requesting
/// thread; an empty function removes it. For tests of exact limits.
void setObserver(std::function<void(std::chrono::milliseconds stated)> observer);

/// Waits for a stated duration. Returns false if the program's end interrupted the wait.
bool sleepFor(std::chrono::milliseconds stated);
/// Waits until a moment of the real clock (not scaled: used where the pace itself is the product). False as
/// above.
bool sleepUntil(TimePoint moment);

/// A stated time limit, scaled when it is made.
class Deadline {
  public:
    explicit Deadline(std::chrono::milliseconds stated) : end_(now() + scaled(stated)) {}
    bool passed() const { return now() >= end_; }
    TimePoint end() const { return end_; }

  private:
    TimePoint end_;
};

/// One event that one thread raises once and another waits for.
class Signal {
  public:
    void raise();
    /// False when the deadline passed or the program's end came first.
    bool waitUntil(TimePoint end);
    /// False when the program's end came first.
    bool wait();
    /// Waits even through the program's end; only for a thread that is known to raise the signal soon.
    void waitUninterrupted();

  private:
    bool raised_ = false;  // under the lock that all waits share
};

/// The program ends: every wait returns at once, now and from now on.
void interruptAll();
bool interrupted();
/// Stops when the program ends, for waits that do not sleep here. What is called then must be quick and must
/// not use Clock.
StopToken ending();
/// Waits work again; for tests, which simulate the program's end more than once in a process.
void resume();

}  // namespace parlivo::Clock
