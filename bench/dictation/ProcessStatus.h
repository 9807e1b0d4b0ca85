// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace parlivo::bench {

/// Megabytes of a process's memory (proc(5), /proc/PID/smaps_rollup).
struct Memory {
    double resident = 0;
    double own = 0;  ///< of the resident, what no other process shares
};
Memory memoryOf(pid_t process);

/// How often the process's threads have been put to sleep so far, by themselves or in favour of others
/// (proc(5), /proc/PID/task/TID/status): an idle thread that wakes up once is put to sleep once.
std::int64_t sleepsOf(pid_t process);

}  // namespace parlivo::bench
