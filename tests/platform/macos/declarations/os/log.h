// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

typedef struct os_log_s* os_log_t;

CF_ENUM(unsigned char, os_log_type_t) {
    OS_LOG_TYPE_ERROR = 16,
};

os_log_t os_log_create(const char* subsystem, const char* category);

}

// A macro there, around a builtin of the compiler and _os_log_impl: here a function of the same reading.
extern "C" void os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...);
