// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace parlivo {

/// Ends the process at once when the display server has ended, before anything is destroyed.
///
/// Qt calls exit() then, in the midst of everything: other threads still run, and what static objects would
/// give back goes through libraries that have ended before them. Qt says what has happened just before its
/// exit(). One instance a process; made and destroyed on the main thread.
class DisplayLoss {
  public:
    /// `last` is called before the end, on any thread.
    explicit DisplayLoss(std::function<void()> last);
    ~DisplayLoss();
    DisplayLoss(const DisplayLoss&) = delete;
    DisplayLoss& operator=(const DisplayLoss&) = delete;
};

}  // namespace parlivo
