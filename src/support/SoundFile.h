// SPDX-License-Identifier: MIT
#pragma once

#include <sndfile.h>

#include <memory>

namespace parlivo {

/// Closes a file of libsndfile. Use sf_close itself where its error counts.
struct SoundFileClose {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
/// An open sound file; nullptr when it could not be opened. Whoever uses it links libsndfile.
using SoundFile = std::unique_ptr<SNDFILE, SoundFileClose>;

}  // namespace parlivo
