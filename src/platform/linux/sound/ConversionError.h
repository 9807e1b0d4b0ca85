// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"
#include "support/SoundFile.h"

namespace parlivo {

/// The error of a failed conversion: the reason is Italian, the detail in a library's words (in the locale's
/// encoding).
inline Error conversionError(const QString& reason, const char* detail = "") {
    return Error(ErrorCode::ConversionFailed, QStringLiteral("afconvert fallito: ") + reason)
        .withDetail(QString::fromLocal8Bit(detail));
}

/// The error that libsndfile has just met with `file`, or when it opened one that is nullptr.
inline Error soundFileError(SNDFILE* file, int systemError) {
    return conversionError(soundFileMeaning(sf_error(file), systemError), sf_strerror(file));
}

/// The error of a resampler, whose words are all that it tells.
inline Error resamplingError(const char* detail) {
    const QString reason =
        QCoreApplication::translate("parlivo::ConversionError", "cambio della frequenza non riuscito");
    return conversionError(reason, detail);
}

}  // namespace parlivo
