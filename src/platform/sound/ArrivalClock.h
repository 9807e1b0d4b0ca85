// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <cstdint>
#include <optional>

namespace parlivo {

/// Estimates which frame of a stream was captured at a given moment, from the times at which pieces of the
/// stream arrived.
///
/// A frame arrives after it was captured, so the piece with the shortest delay gives the best estimate of the
/// stream's beginning. Only the last seconds count: the clock of a sound card drifts from the computer's by
/// some milliseconds a minute.
class ArrivalClock {
  public:
    explicit ArrivalClock(double framesPerSecond) : rate_(framesPerSecond) {}

    /// The stream has grown to `frames` frames at the moment `at`. Moments do not go backwards.
    void arrived(std::uint64_t frames, Clock::TimePoint at);
    /// The stream's length at that moment; some of it may still be on its way. nullopt before the first
    /// arrival.
    std::optional<std::uint64_t> framesBefore(Clock::TimePoint moment) const;

  private:
    using Seconds = std::chrono::duration<double>;
    static constexpr std::chrono::seconds window{1};

    const double rate_;
    // The earliest beginning of the stream that is possible by the arrivals of each window.
    std::optional<Clock::TimePoint> beginning_;
    std::optional<Clock::TimePoint> earlierBeginning_;
    Clock::TimePoint windowEnd_{};
};

}  // namespace parlivo
