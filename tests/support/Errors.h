// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"

namespace parlivo {

/// Whether an error is this one of the program's own, and not one of another domain with the same number.
inline bool isError(const Error& error, ErrorCode code) {
    return error.domain() == Error::programDomain() && error.code() == static_cast<int>(code);
}

}  // namespace parlivo
