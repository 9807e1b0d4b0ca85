// SPDX-License-Identifier: MIT
#include "ui/onboarding/TransferRate.h"

namespace parlivo {

namespace {

constexpr std::chrono::seconds window{5};
/// A shorter time tells more about the reports than about the network.
constexpr std::chrono::milliseconds shortest{500};

}  // namespace

void TransferRate::start(Clock::TimePoint now) {
    samples_.assign({{now, 0}});
}

void TransferRate::add(qint64 received, Clock::TimePoint now) {
    if (samples_.empty() || received <= samples_.back().received) return;
    samples_.push_back({now, received});
    // Two stay at least, for a network that reports seldom.
    while (samples_.size() > 2 && now - samples_[1].when >= window) samples_.pop_front();
}

std::optional<double> TransferRate::bytesPerSecond() const {
    if (samples_.size() < 2) return std::nullopt;
    const auto time = samples_.back().when - samples_.front().when;
    if (time < shortest) return std::nullopt;
    return static_cast<double>(samples_.back().received - samples_.front().received) /
           std::chrono::duration<double>(time).count();
}

bool TransferRate::isStalled(Clock::TimePoint now) const {
    return !samples_.empty() && now - samples_.back().when >= stallLimit;
}

}  // namespace parlivo
