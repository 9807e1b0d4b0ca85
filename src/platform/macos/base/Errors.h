// SPDX-License-Identifier: MIT
#pragma once

#include "platform/macos/base/Strings.h"
#include "support/Error.h"

namespace parlivo {

/// The system's error as the program passes it up: its domain, its code and its own words for the user.
inline Error fromNSError(NSError* error) {
    return {fromNSString(error.domain), static_cast<int>(error.code),
            fromNSString(error.localizedDescription)};
}

}  // namespace parlivo
