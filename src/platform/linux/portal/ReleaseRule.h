// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <chrono>
#include <optional>

namespace parlivo::portal {

/// When a hold of a hot key ends that the desktop tells of by "activated", repeated like a key while it is
/// held, and "deactivated", which some desktops leave out when the modifier is let go before the key. What is
/// not told is concluded from the repeats: they stop with the hold.
class ReleaseRule {
  public:
    /// How the desktop repeats a key that is held.
    struct Repeat {
        bool isOn = true;
        std::chrono::milliseconds delay{500};
        std::chrono::milliseconds interval{30};
    };

    enum class Edges {
        None,
        Press,
        ReleaseAndPress,  ///< the former hold's release was lost
    };

    /// For holds that begin from now on.
    void setRepeat(const Repeat& repeat) { repeat_ = repeat; }

    /// The desktop tells "activated". What that means.
    Edges activated(Clock::TimePoint now);
    /// The hold is over, however that came to be known. False if there was none.
    bool end();
    bool isHeld() const { return held_; }
    /// When the hold counts as over if the desktop tells nothing more; nullopt without one, and where keys do
    /// not repeat.
    std::optional<Clock::TimePoint> deadline() const { return deadline_; }

  private:
    Repeat repeat_;
    bool held_ = false;
    std::optional<Clock::TimePoint> deadline_;
};

}  // namespace parlivo::portal
