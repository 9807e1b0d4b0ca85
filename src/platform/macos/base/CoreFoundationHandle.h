// SPDX-License-Identifier: MIT
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace parlivo {

struct CoreFoundationRelease {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Owns one reference to an object of a system interface in C, as its functions named Create and Copy return
/// it.
template <typename Reference>
using CoreFoundationHandle = std::unique_ptr<std::remove_pointer_t<Reference>, CoreFoundationRelease>;

}  // namespace parlivo
