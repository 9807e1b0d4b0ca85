#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace parlivo::bench {

/// Hears every key press of the display, whoever presses and whoever receives it, and notes when.
class KeyListener {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Throws std::runtime_error where the display does not tell.
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
