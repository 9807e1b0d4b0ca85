#pragma once

#include "platform/AudioInput.h"
#include "support/Clock.h"
#include "support/Lifetime.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// Records the default microphone into a temporary file, while the dictation key is held. One object serves
/// the whole run of the program. Main thread, apart from convertToWhisperWAV. ("URL" in the names is the
/// path of a file.)
class AudioRecorder {
  public:
    /// A shorter recording is an accidental tap of the key.
    static constexpr std::chrono::milliseconds minimumDuration{300};

    using Now = std::function<Clock::TimePoint()>;
    explicit AudioRecorder(Now now = &Clock::now);
    ~AudioRecorder();
    AudioRecorder(const AudioRecorder&) = delete;
    AudioRecorder& operator=(const AudioRecorder&) = delete;

    /// Begins a new recording; one that is under way is abandoned, its file stays. Throws Error: of the code
    /// MicrophoneUnavailable, or the system's own when the file cannot be created or capture not started. A
    /// failure leaves nothing behind.
    void start();

    /// Ends the recording with what was spoken until now, and returns its file, complete and closed. Nothing
    /// when it lasted less than minimumDuration or none was under way; the file of `currentURL` is deleted
    /// then. The caller owns the file that it gets. Blocks until the last sound has come through the system
    /// (tens of milliseconds).
    std::optional<QString> stop();

    /// Converts a recording to what the recogniser takes (WAV, 16 kHz, mono, 16 bits) and returns the path:
    /// the same with the extension "wav". Blocks; not on the main thread. Throws Error ConversionFailed.
    static QString convertToWhisperWAV(const QString& url);

    /// The smoothed loudness, 0 to 1; 0 when nothing is recorded.
    float level() const;
    /// The file of the last recording that was started.
    const std::optional<QString>& currentURL() const { return currentURL_; }

    /// Called once, on the main thread, when the microphone went away while recording. The recording is still
    /// open: stop() gives what there is.
    std::function<void()> onInterrupted;

  private:
    struct Recording;
    void stopEngineOnly();
    static AudioCapture::Tap makeTap(const std::weak_ptr<Recording>& recording);
    AudioCapture::Interruption makeInterruption(const Recording& recording) const;

    const Now now_;
    std::unique_ptr<AudioCapture> engine_;
    std::shared_ptr<Recording> recording_;
    std::optional<QString> currentURL_;
    std::optional<Clock::TimePoint> startTime_;
};

}  // namespace parlivo
