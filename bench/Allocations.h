// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace parlivo::bench {

/// How often this thread has asked for memory, through new or through malloc: the libraries' calls count too.
std::uint64_t allocations();

}  // namespace parlivo::bench
