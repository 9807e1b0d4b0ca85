// SPDX-License-Identifier: MIT
#pragma once

#include "dictation/KeyListener.h"
#include "support/Receiver.h"
#include "support/StubServer.h"

#include <QString>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace parlivo::bench {

using SteadyClock = std::chrono::steady_clock;

/// Milliseconds as a number.
double milliseconds(SteadyClock::duration duration);
/// Throws std::runtime_error if the condition is false: a measurement of something that failed is worthless.
void require(bool condition, const char* what);

/// A recogniser that answers at once and notes what was sent to it and when.
class TimedRecogniser {
  public:
    struct Request {
        SteadyClock::time_point arrived;  ///< its last byte
        SteadyClock::time_point answered;
        std::chrono::duration<double> recording{};  ///< how long the sound is
    };

    TimedRecogniser();
    /// What it answers from now on.
    void setTranscript(const QString& text);
    /// The last request, once.
    std::optional<Request> take();
    /// When it was asked whether it is there.
    std::vector<SteadyClock::time_point> probesSince(SteadyClock::time_point begin) const;

  private:
    std::mutex mutex_;
    StubReply reply_;                 // under mutex_
    std::optional<Request> request_;  // under mutex_
    StubServer server_;
};

/// A way to dictate: presses and releases a key, and says when the text has been typed.
class DictationMethod {
  public:
    virtual ~DictationMethod() = default;
    virtual void press() = 0;
    virtual void release() = 0;
    virtual bool isOver() = 0;
};

/// One dictation, seen from outside.
struct Dictation {
    SteadyClock::time_point pressed;
    SteadyClock::time_point released;
    TimedRecogniser::Request request;
    std::vector<SteadyClock::time_point> keys;  ///< the presses that typed the text

    double toRequest() const { return milliseconds(request.arrived - released); }
    double toFirstKey() const { return milliseconds(keys.front() - request.answered); }
    /// How much of the time for which the key was held is not in the recording, in ms. Where the end is cut
    /// off at the key's release, it is what is missing at the beginning.
    double unrecorded() const { return milliseconds(released - pressed) - 1'000 * request.recording.count(); }
    /// How far the pace of the keys is from `pause` between any two, in per cent.
    double paceError(SteadyClock::duration pause) const;
};

/// What every dictation method is measured with: the recogniser that it asks, the window that it types into.
class Testbed {
  public:
    Testbed() : receiver_(desktop::Receiver::Kind::Xterm) {}

    /// Holds the key for so long. `text`, which is understood, must arrive whole; its characters need no
    /// Shift.
    Dictation dictate(DictationMethod& way, std::chrono::milliseconds hold, const QString& text);
    TimedRecogniser& recogniser() { return recogniser_; }

  private:
    TimedRecogniser recogniser_;
    desktop::Receiver receiver_;
    KeyListener listener_;
    QString received_;
};

}  // namespace parlivo::bench
