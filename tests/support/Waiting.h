// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

namespace parlivo::desktop {

/// How long a test waits for what other programs do before it calls it failed.
inline constexpr std::chrono::seconds defaultTimeout{30};

/// Waits until `condition` holds, with the main thread's events being handled meanwhile. False when `limit`
/// passed first. Main thread.
bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit = defaultTimeout);

/// Handles the main thread's events for a while: for what must *not* happen, where there is no condition to
/// wait for. Main thread.
void letPass(std::chrono::milliseconds duration);

}  // namespace parlivo::desktop
