// SPDX-License-Identifier: MIT
#include "audio/AudioRecorder.h"

#include "audio/CaptureFile.h"
#include "audio/LevelMeter.h"
#include "platform/Platform.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/Uuid.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::AudioRecorder)
};

QString freshCapturePath() {
    return QDir(Platform::current().directories().temporary())
        .filePath(QStringLiteral("parlivo-%1.caf").arg(freshUuid()));
}

QString wavPathFor(const QString& capture) {
    const QFileInfo file(capture);
    return file.dir().filePath(file.completeBaseName() + QStringLiteral(".wav"));
}

std::unique_ptr<AudioCapture> openMicrophone() {
    auto engine = Platform::current().audioInput().open();
    if (!engine || !engine->format().usable())
        throw Error(ErrorCode::MicrophoneUnavailable, Texts::tr("Microfono non disponibile"));
    return engine;
}

/// The WAV of the recording that ended last, until it is asked for. It is kept outside of the recorder
/// because convertToWhisperWAV belongs to no object and runs on another thread. Any thread.
class FinishedWav {
  public:
    /// The WAV that was there before is deleted.
    void put(const QString& capture, std::unique_ptr<WavStream> wav) {
        const std::lock_guard lock(mutex_);
        capture_ = capture;
        wav_ = std::move(wav);
    }
    /// nullptr if it is not of that recording.
    std::unique_ptr<WavStream> take(const QString& capture) {
        const std::lock_guard lock(mutex_);
        return capture_ == capture ? std::move(wav_) : nullptr;
    }

  private:
    std::mutex mutex_;
    QString capture_;                 // under mutex_
    std::unique_ptr<WavStream> wav_;  // under mutex_
};

FinishedWav& finishedWav() {
    static FinishedWav instance;
    return instance;
}

}  // namespace

/// What the audio thread works on. No other thread touches the files while capture runs.
class AudioRecorder::Recording {
  public:
    Recording(const QString& path, const AudioFormat& format, const RecordingLimits& limits)
        : capture_(path, format),
          wav_(Platform::current().wavConverter().convertWhileRecording(format, wavPathFor(path))),
          channels_(static_cast<std::size_t>(format.channels)),
          folder_(QFileInfo(path).path().toStdU16String()),
          limits_(limits),
          framesBetweenChecks_(static_cast<std::uintmax_t>(format.sampleRate) *
                               static_cast<std::uintmax_t>(limits.secondsBetweenChecks)),
          nextCheck_(framesBetweenChecks_) {}

    /// Audio thread.
    void append(std::span<const float> samples, std::size_t frames) {
        capture_.append(samples, frames);
        if (wav_) wav_->append(samples, frames);
        const float target = LevelMeter::target(samples, channels_);
        level_.store(LevelMeter::smoothed(level(), target), std::memory_order_relaxed);
        frames_ += frames;
    }

    /// Whether a limit was reached; true only once. Audio thread.
    bool reachesLimit() {
        if (limitReached_) return false;
        limitReached_ = frames_ * channels_ * sizeof(float) >= limits_.largestFile || isSpaceShort();
        return limitReached_;
    }

    float level() const { return level_.load(std::memory_order_relaxed); }
    Lifetime::Token token() const { return lifetime_.token(); }

    /// Completes the WAV; nullptr if there is none or it failed. When capture has ended.
    std::unique_ptr<WavStream> takeWav() {
        if (!wav_) return nullptr;
        try {
            wav_->finish();
        } catch (const Error&) {
            return nullptr;  // the conversion afterwards will say why
        }
        return std::move(wav_);
    }

  private:
    bool isSpaceShort() {
        if (frames_ < nextCheck_) return false;
        nextCheck_ = frames_ + framesBetweenChecks_;
        std::error_code error;
        const auto space = std::filesystem::space(folder_, error);
        return !error && space.available < limits_.leastFreeSpace;
    }

    CaptureFile capture_;
    std::unique_ptr<WavStream> wav_;
    const std::size_t channels_;
    const std::filesystem::path folder_;
    const RecordingLimits limits_;
    const std::uintmax_t framesBetweenChecks_;
    std::uintmax_t frames_ = 0;
    std::uintmax_t nextCheck_;  // in frames
    bool limitReached_ = false;
    std::atomic<float> level_ = 0;  // written by the audio thread, drawn by the main thread
    const Lifetime lifetime_;  // of this recording, not of the recorder: a late message must not end the next
};

AudioRecorder::AudioRecorder(Now now, const RecordingLimits& limits)
    : now_(std::move(now)), limits_(limits) {}

AudioRecorder::~AudioRecorder() {
    stopEngineOnly();
    finishedWav().put({}, nullptr);
}

void AudioRecorder::start() {
    stopEngineOnly();
    const QString url = freshCapturePath();
    auto engine = openMicrophone();
    auto recording = std::make_shared<Recording>(url, engine->format(), limits_);
    auto discard = qScopeGuard([&] { QFile::remove(url); });
    auto tap = [recording = std::weak_ptr(recording), interrupt = makeInterruption(recording)](
                   std::span<const float> samples, std::size_t frames) {
        const auto alive = recording.lock();
        if (!alive) return;
        alive->append(samples, frames);
        if (alive->reachesLimit()) interrupt();
    };
    engine->start(std::move(tap), makeInterruption(recording));
    discard.dismiss();
    engine_ = std::move(engine);
    recording_ = std::move(recording);
    currentURL_ = url;
    startTime_ = now_();
}

AudioCapture::Interruption AudioRecorder::makeInterruption(const std::weak_ptr<Recording>& recording) const {
    return [this, alive = recording.lock()->token()] {
        MainQueue::async(alive, [this] {
            if (onInterrupted) onInterrupted();
        });
    };
}

std::optional<QString> AudioRecorder::stop() {
    const auto end = now_();
    const bool longEnough = startTime_ && end - *startTime_ >= minimumDuration;
    auto url = currentURL_;
    if (longEnough) {
        engine_->stop(end);
        engine_.reset();
        finishedWav().put(*url, recording_->takeWav());
    }
    stopEngineOnly();
    if (longEnough || !url) return url;
    QFile::remove(*url);
    return std::nullopt;
}

/// The engine goes first: no tap is running when the files are closed.
void AudioRecorder::stopEngineOnly() {
    engine_.reset();
    recording_.reset();
    startTime_.reset();
}

float AudioRecorder::level() const {
    return recording_ ? recording_->level() : 0.0F;
}

QString AudioRecorder::convertToWhisperWAV(const QString& url) {
    QString path = wavPathFor(url);
    if (const auto wav = finishedWav().take(url)) {
        wav->keep();
    } else {
        Platform::current().wavConverter().convert(url, path);
    }
    return path;
}

}  // namespace parlivo
