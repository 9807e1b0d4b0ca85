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
#include <utility>

namespace parlivo {

/// What the audio thread works on. It is the only one to touch the file while capture runs.
struct AudioRecorder::Recording {
    Recording(const QString& path, const AudioFormat& format)
        : file(path, format), channels(static_cast<std::size_t>(format.channels)) {}

    void take(std::span<const float> samples, std::size_t frames) {
        file.append(samples, frames);
        const float target = LevelMeter::target(samples, channels);
        level.store(LevelMeter::smoothed(level.load(std::memory_order_relaxed), target),
                    std::memory_order_relaxed);
    }

    CaptureFile file;
    const std::size_t channels;
    std::atomic<float> level = 0;  // written by the audio thread, drawn by the main thread
    const Lifetime lifetime;  // of this recording, not of the recorder: a late message must not end the next
};

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::AudioRecorder)
};

QString freshCapturePath() {
    return QDir(Platform::current().directories().temporary())
        .filePath(QStringLiteral("parlivo-%1.caf").arg(freshUuid()));
}

std::unique_ptr<AudioCapture> openMicrophone() {
    auto engine = Platform::current().audioInput().open();
    if (!engine || !engine->format().usable())
        throw Error(ErrorCode::MicrophoneUnavailable, Texts::tr("Microfono non disponibile"));
    return engine;
}

}  // namespace

AudioRecorder::AudioRecorder(Now now) : now_(std::move(now)) {}

AudioRecorder::~AudioRecorder() {
    stopEngineOnly();
}

void AudioRecorder::start() {
    stopEngineOnly();
    const QString url = freshCapturePath();
    auto engine = openMicrophone();
    auto recording = std::make_shared<Recording>(url, engine->format());
    auto discard = qScopeGuard([&] { QFile::remove(url); });
    engine->start(makeTap(recording), makeInterruption(*recording));
    discard.dismiss();
    engine_ = std::move(engine);
    recording_ = std::move(recording);
    currentURL_ = url;
    startTime_ = now_();
}

AudioCapture::Tap AudioRecorder::makeTap(const std::weak_ptr<Recording>& recording) {
    return [recording](std::span<const float> samples, std::size_t frames) {
        if (const auto alive = recording.lock()) alive->take(samples, frames);
    };
}

AudioCapture::Interruption AudioRecorder::makeInterruption(const Recording& recording) const {
    return [this, alive = recording.lifetime.token()] {
        MainQueue::async(alive, [this] {
            if (onInterrupted) onInterrupted();
        });
    };
}

std::optional<QString> AudioRecorder::stop() {
    const auto end = now_();
    const bool longEnough = startTime_ && end - *startTime_ >= minimumDuration;
    auto url = currentURL_;
    if (longEnough) engine_->stop(end);
    stopEngineOnly();
    if (longEnough || !url) return url;
    QFile::remove(*url);
    return {};
}

/// The engine goes first: no tap is running when the file is closed.
void AudioRecorder::stopEngineOnly() {
    engine_.reset();
    recording_.reset();
    startTime_.reset();
}

float AudioRecorder::level() const {
    return recording_ ? recording_->level.load(std::memory_order_relaxed) : 0.0F;
}

QString AudioRecorder::convertToWhisperWAV(const QString& url) {
    const QFileInfo source(url);
    QString wav = source.dir().filePath(source.completeBaseName() + QStringLiteral(".wav"));
    Platform::current().wavConverter().convert(url, wav);
    return wav;
}

}  // namespace parlivo
