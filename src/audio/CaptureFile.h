// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "support/SoundFile.h"

#include <QString>

#include <cstddef>
#include <span>

namespace parlivo {

/// A recording on disk: Core Audio Format, 32-bit float, written as it comes. Only the user can read it (mode
/// 0600), and it is locked (FileLock) while it is open. Closed by its end; never deleted by it.
class CaptureFile {
  public:
    /// Creates the file. Throws Error with the system's text when it cannot; a file that was there stays
    /// untouched.
    CaptureFile(const QString& path, const AudioFormat& format);

    /// Appends interleaved frames, without allocating. An error of the disk is ignored: what has been written
    /// remains usable.
    void append(std::span<const float> samples, std::size_t frames) noexcept;

  private:
    SoundFile file_;
};

}  // namespace parlivo
