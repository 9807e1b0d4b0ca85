// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <vector>

namespace parlivo {

/// Notes every duration that the program asks the clock for while this object lives, as it is stated in the
/// code and whatever the clock's scale: a test compares it with the exact number. Any thread.
class AskedWaits {
  public:
    AskedWaits() {
        Clock::setObserver([this](std::chrono::milliseconds stated) {
            const std::lock_guard lock(mutex_);
            asked_.push_back(stated);
        });
    }
    ~AskedWaits() { Clock::setObserver({}); }
    AskedWaits(const AskedWaits&) = delete;
    AskedWaits& operator=(const AskedWaits&) = delete;

    std::vector<std::chrono::milliseconds> all() const {
        const std::lock_guard lock(mutex_);
        return asked_;
    }
    /// How often exactly this duration was asked for.
    auto count(std::chrono::milliseconds stated) const { return std::ranges::count(all(), stated); }
    /// The longest of all; 0 when none was asked for.
    std::chrono::milliseconds longest() const {
        const auto asked = all();
        return asked.empty() ? std::chrono::milliseconds(0) : std::ranges::max(asked);
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::chrono::milliseconds> asked_;  // under mutex_
};

}  // namespace parlivo
