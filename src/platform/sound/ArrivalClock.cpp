// SPDX-License-Identifier: MIT
#include "platform/sound/ArrivalClock.h"

#include <algorithm>

namespace parlivo {

void ArrivalClock::arrived(std::uint64_t frames, Clock::TimePoint at) {
    const Seconds length(static_cast<double>(frames) / rate_);
    const auto beginning = at - std::chrono::duration_cast<Clock::Duration>(length);
    if (at >= windowEnd_) {
        earlierBeginning_ = beginning_;
        beginning_ = beginning;
        windowEnd_ = at + window;
    }
    beginning_ = std::min(*beginning_, beginning);
}

std::optional<std::uint64_t> ArrivalClock::framesBefore(Clock::TimePoint moment) const {
    if (!beginning_) return {};
    const auto beginning = std::min(*beginning_, earlierBeginning_.value_or(*beginning_));
    const double frames = Seconds(moment - beginning).count() * rate_;
    return static_cast<std::uint64_t>(std::max(frames, 0.0));
}

}  // namespace parlivo
