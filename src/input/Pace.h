// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

namespace parlivo {

/// The moments at which the steps of an even sequence are over.
///
/// They lie on a fixed grid from the start on, so that the duration of a step, or a late one, does not delay
/// the following steps. A delay of more than `longestMakeUp` is not made up for, because that would make a
/// burst.
class Pace {
  public:
    static constexpr std::chrono::milliseconds longestMakeUp{250};

    Pace(Clock::Duration step, Clock::TimePoint start) : step_(step), due_(start) {}

    /// When the pause of a step is over that was done at `done`; possibly in the past.
    Clock::TimePoint after(Clock::TimePoint done) {
        due_ += step_;
        if (done - due_ > longestMakeUp) due_ = done + step_;
        return due_;
    }

  private:
    Clock::Duration step_;
    Clock::TimePoint due_;
};

}  // namespace parlivo
