// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"

#include <QtGlobal>

#include <chrono>
#include <deque>
#include <optional>

namespace parlivo {

/// How fast bytes come in, by those of the last seconds. Any one thread.
class TransferRate {
  public:
    /// Without a byte for this long a transfer counts as stalled.
    static constexpr std::chrono::seconds stallLimit{10};

    /// A transfer begins: nothing has come.
    void start(Clock::TimePoint now);
    /// `received` bytes have come since the start.
    void add(qint64 received, Clock::TimePoint now);

    /// Bytes a second; nullopt until there is something to tell it from.
    std::optional<double> bytesPerSecond() const;
    bool isStalled(Clock::TimePoint now) const;

  private:
    struct Sample {
        Clock::TimePoint when;
        qint64 received = 0;
    };
    std::deque<Sample> samples_;
};

}  // namespace parlivo
