#pragma once

#include "platform/WavConverter.h"

namespace parlivo {

/// Conversion in the process: libsndfile reads and writes, libsoxr resamples. Works block by block, so a long
/// recording needs no more memory than a short one.
class SndfileWavConverter : public WavConverter {
  public:
    void convert(const QString& source, const QString& destination) override;
};

}  // namespace parlivo
