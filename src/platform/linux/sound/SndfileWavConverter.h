// SPDX-License-Identifier: MIT
#pragma once

#include "platform/WavConverter.h"

namespace parlivo {

/// Conversion in the process: libsndfile reads the capture file, WavWriter does the rest.
class SndfileWavConverter : public WavConverter {
  public:
    void convert(const QString& source, const QString& destination) override;
    std::unique_ptr<WavStream> convertWhileRecording(const AudioFormat& format,
                                                     const QString& destination) override;
};

}  // namespace parlivo
