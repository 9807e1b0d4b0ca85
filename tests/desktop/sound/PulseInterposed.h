// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

/// What the program asks of libpulse, counted and disturbed on its way: this program's own definitions of
/// some of its functions come first and pass on to the library.
namespace parlivo::desktop::interposed {

/// Recordings begun.
inline std::atomic<int> recordings = 0;
/// Sounds handed over.
inline std::atomic<int> writes = 0;
/// How often the main thread has waited for a server.
inline std::atomic<int> waits = 0;
/// Questions about a single source are not accepted.
inline std::atomic<bool> refuseSourceQuestions = false;

}  // namespace parlivo::desktop::interposed
