// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"

namespace parlivo {

/// The error of a failed conversion, with a library's words (in the locale's encoding) for the reason.
inline Error conversionError(const char* reason) {
    return {ErrorCode::ConversionFailed,
            QStringLiteral("afconvert fallito: ") + QString::fromLocal8Bit(reason)};
}

}  // namespace parlivo
