// SPDX-License-Identifier: MIT
#pragma once

#include "support/Error.h"

#include <QCoreApplication>

#include <sndfile.h>

#include <memory>

namespace parlivo {

/// Closes a file of libsndfile. Use sf_close itself where its error counts.
struct SoundFileClose {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
/// An open sound file; nullptr when it could not be opened. Whoever uses it links libsndfile.
using SoundFile = std::unique_ptr<SNDFILE, SoundFileClose>;

/// What an error number of libsndfile means to the user, in Italian. `systemError` is errno as the library
/// left it; 0 if that is not known.
inline QString soundFileMeaning(int error, int systemError) {
    const auto text = [](const char* source) {
        return QCoreApplication::translate("parlivo::SoundFile", source);
    };
    switch (error) {
        case SF_ERR_SYSTEM:
            return systemError != 0 ? Error::meaning(systemError)
                                    : text(QT_TRANSLATE_NOOP("parlivo::SoundFile", "errore del disco"));
        case SF_ERR_UNRECOGNISED_FORMAT:
        case SF_ERR_UNSUPPORTED_ENCODING:
            return text(QT_TRANSLATE_NOOP("parlivo::SoundFile", "formato audio sconosciuto"));
        case SF_ERR_MALFORMED_FILE:
            return text(QT_TRANSLATE_NOOP("parlivo::SoundFile", "il file audio è danneggiato"));
        default:
            return text(QT_TRANSLATE_NOOP("parlivo::SoundFile", "il file audio non si può usare"));
    }
}

}  // namespace parlivo
