// SPDX-License-Identifier: MIT
#include "platform/linux/portal/ReleaseRule.h"

#include <algorithm>
#include <utility>

namespace parlivo::portal {

namespace {

using namespace std::chrono_literals;

/// What a busy desktop may be late by.
constexpr auto lateness = 200ms;
/// Between repeats, five of which may be missing.
constexpr auto shortestSilence = 150ms;
constexpr int missingRepeats = 5;

}  // namespace

ReleaseRule::Edges ReleaseRule::activated(Clock::TimePoint now) {
    const bool wasHeld = std::exchange(held_, true);
    if (!repeat_.isOn) {
        deadline_.reset();
        return wasHeld ? Edges::ReleaseAndPress : Edges::Press;
    }
    const std::chrono::milliseconds silence =
        wasHeld ? std::max<std::chrono::milliseconds>(shortestSilence, missingRepeats * repeat_.interval)
                : repeat_.delay + lateness;
    deadline_ = now + silence;
    return wasHeld ? Edges::None : Edges::Press;
}

bool ReleaseRule::end() {
    deadline_.reset();
    return std::exchange(held_, false);
}

}  // namespace parlivo::portal
