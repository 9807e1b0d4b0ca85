#pragma once

#include "support/Clock.h"

#include <cstdint>
#include <optional>

namespace parlivo {

/// Tells which frame of a stream was captured at a given moment, from nothing but the times at which pieces
/// of it arrived.
///
/// A frame arrives after it was captured, and the piece that was least delayed shows best how the stream's
/// time lies to the clock's. Only the last seconds count: the crystal of a sound card drifts from the
/// computer's clock by some milliseconds a minute.
class ArrivalClock {
  public:
    explicit ArrivalClock(double framesPerSecond) : rate_(framesPerSecond) {}

    /// The stream has grown to `frames` frames at the moment `at`. Moments do not go backwards.
    void arrived(std::uint64_t frames, Clock::TimePoint at);
    /// The stream's length at that moment; some of it may still be on its way. Nothing before the first
    /// arrival.
    std::optional<std::uint64_t> framesBefore(Clock::TimePoint moment) const;

  private:
    using Seconds = std::chrono::duration<double>;
    static constexpr std::chrono::seconds window{1};

    const double rate_;
    // The earliest beginning of the stream that each window's arrivals allow.
    std::optional<Clock::TimePoint> beginning_;
    std::optional<Clock::TimePoint> earlierBeginning_;
    Clock::TimePoint windowEnd_{};
};

}  // namespace parlivo
