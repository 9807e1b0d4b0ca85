// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <cstdint>

extern "C" {

// In no list; from its documentation.
std::uint64_t mach_absolute_time(void);

}
