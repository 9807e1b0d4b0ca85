// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace parlivo::bench {

/// Records the time of every key press on the display, from any device and for any window.
class KeyListener {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Throws std::runtime_error if the display does not report key presses.
    KeyListener();

    /// The moments of the presses since `begin`, oldest first.
    std::vector<TimePoint> pressesSince(TimePoint begin) const;

  private:
    void selectPresses();
    void listen(const std::stop_token& end);
    void takeEvents();

    x11::ConnectionHandle connection_;
    mutable std::mutex mutex_;
    std::vector<TimePoint> presses_;  // under mutex_
    std::jthread thread_;             // the last: it uses the others
};

}  // namespace parlivo::bench
