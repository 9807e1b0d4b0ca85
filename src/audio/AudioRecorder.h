// SPDX-License-Identifier: MIT
#pragma once

#include "platform/AudioInput.h"
#include "support/Clock.h"
#include "support/Lifetime.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// When a recording that nobody ends ends by itself.
struct RecordingLimits {
    std::uintmax_t largestFile = 2'000'000'000;   ///< bytes of the capture file
    std::uintmax_t leastFreeSpace = 200'000'000;  ///< bytes left on its file system
    /// The free space is looked at once in so many seconds of sound. Even on a disk that is nearly full a
    /// recording gets that long.
    int secondsBetweenChecks = 5;
};

/// Records the default microphone into a temporary file, while the dictation key is held. One object serves
/// the whole run of the program. Main thread, apart from convertToWhisperWAV. ("URL" in the names is the
/// path of a file.)
///
/// Where the platform can do it, the recording is converted while it is made, so that the WAV is ready when
/// the recording ends, however long it was.
class AudioRecorder {
  public:
    /// A shorter recording is an accidental tap of the key.
    static constexpr std::chrono::milliseconds minimumDuration{300};

    using Now = std::function<Clock::TimePoint()>;
    explicit AudioRecorder(Now now = &Clock::now, const RecordingLimits& limits = {});
    /// Deletes a WAV that was not asked for.
    ~AudioRecorder();
    AudioRecorder(const AudioRecorder&) = delete;
    AudioRecorder& operator=(const AudioRecorder&) = delete;

    /// Begins a new recording; one that is under way is abandoned, its file stays. Throws Error: of the code
    /// MicrophoneUnavailable, or the system's own when the file cannot be created or capture not started. A
    /// failure leaves nothing behind.
    void start();

    /// Ends the recording with what was spoken until now, and returns its file, complete and closed. nullopt
    /// when it lasted less than minimumDuration or none was under way; the file of `currentURL` is deleted
    /// then. The caller owns the file that it gets. Blocks until the last sound has come through the system
    /// (tens of milliseconds).
    std::optional<QString> stop();

    /// Returns the recording as the recogniser takes it (WAV, 16 kHz, mono, 16 bits): the same path with the
    /// extension "wav". Converts it if that was not done while recording. The caller owns the WAV. Blocks;
    /// not on the main thread. Throws Error ConversionFailed.
    static QString convertToWhisperWAV(const QString& url);

    /// The smoothed loudness, 0 to 1; 0 when nothing is recorded.
    float level() const;
    /// The file of the last recording that was started.
    const std::optional<QString>& currentURL() const { return currentURL_; }

    /// Called once, on the main thread, when the recording should end before the key comes up: the microphone
    /// went away, or a limit was reached. The recording is still open: stop() gives what there is.
    std::function<void()> onInterrupted;

  private:
    class Recording;
    void stopEngineOnly();
    AudioCapture::Interruption makeInterruption(const std::weak_ptr<Recording>& recording) const;

    const Now now_;
    const RecordingLimits limits_;
    std::unique_ptr<AudioCapture> engine_;
    std::shared_ptr<Recording> recording_;
    std::optional<QString> currentURL_;
    std::optional<Clock::TimePoint> startTime_;
};

}  // namespace parlivo
