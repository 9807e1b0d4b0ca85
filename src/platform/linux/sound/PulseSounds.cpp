// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseSounds.h"

#include "platform/linux/sound/PulseConnection.h"
#include "support/SoundFile.h"

#include <QFile>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace parlivo {

namespace {

/// A server that takes longer than this to answer, or to finish a sound after its length, hangs.
constexpr std::chrono::milliseconds answerLimit{1000};
/// A sound that would begin later than this after it was asked for is dropped.
constexpr std::chrono::milliseconds latestBegin{1000};

struct Clip {
    pa_sample_spec spec{};
    std::vector<std::int16_t> samples;

    std::size_t bytes() const { return samples.size() * sizeof(std::int16_t); }
    std::chrono::microseconds length() const {
        return std::chrono::microseconds(pa_bytes_to_usec(bytes(), &spec));
    }
};

std::optional<Clip> load(const QString& path) {
    SF_INFO info{};
    const SoundFile file(sf_open(QFile::encodeName(path).constData(), SFM_READ, &info));
    if (!file) return {};
    Clip clip{{PA_SAMPLE_S16NE, static_cast<std::uint32_t>(info.samplerate),
               static_cast<std::uint8_t>(info.channels)},
              std::vector<std::int16_t>(static_cast<std::size_t>(info.frames * info.channels))};
    if (sf_readf_short(file.get(), clip.samples.data(), info.frames) != info.frames) return {};
    return clip;
}

/// One playback stream. Used under the connection's lock.
class Playback {
  public:
    Playback(const PulseConnection& connection, const Clip& clip)
        : connection_(connection),
          clip_(clip),
          stream_(pa_stream_new(connection.context(), "Segnale", &clip.spec, nullptr)) {}
    ~Playback() {
        if (!stream_) return;
        pa_stream_set_state_callback(stream_.get(), nullptr, nullptr);
        pa_stream_disconnect(stream_.get());
    }
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /// Plays the sound unless it would begin after `latest`, and returns when it has been played or has
    /// failed.
    void run(Clock::TimePoint latest) {
        if (connect() && Clock::now() < latest && write()) drain();
    }

  private:
    bool connect() {
        if (!stream_) return false;
        const auto changed = [](pa_stream*, void* self) { static_cast<Playback*>(self)->connection_.wake(); };
        pa_stream_set_state_callback(stream_.get(), changed, this);
        if (pa_stream_connect_playback(stream_.get(), nullptr, nullptr, PA_STREAM_NOFLAGS, nullptr, nullptr) <
            0)
            return false;
        wait(answerLimit, [this] { return state() != PA_STREAM_CREATING; });
        return state() == PA_STREAM_READY;
    }

    bool write() {
        return pa_stream_write(stream_.get(), clip_.samples.data(), clip_.bytes(), nullptr, 0,
                               PA_SEEK_RELATIVE) == 0;
    }

    void drain() {
        const auto drained = [](pa_stream*, int, void* self) {
            static_cast<Playback*>(self)->drained_ = true;
            static_cast<Playback*>(self)->connection_.wake();
        };
        const PulseOperationHandle operation(pa_stream_drain(stream_.get(), drained, this));
        wait(clip_.length() + answerLimit, [this] { return drained_ || state() != PA_STREAM_READY; });
        if (operation) pa_operation_cancel(operation.get());
    }

    pa_stream_state_t state() const { return pa_stream_get_state(stream_.get()); }
    void wait(Clock::Duration limit, const std::function<bool()>& condition) const {
        connection_.waitUntil(Clock::now() + limit, [&] { return condition() || !connection_.isAlive(); });
    }

    const PulseConnection& connection_;
    const Clip& clip_;
    const PulseStreamHandle stream_;
    bool drained_ = false;
};

void playBefore(Clock::TimePoint latest, const Clip& clip) {
    const auto connection = PulseConnection::open(Clock::now() + answerLimit);
    if (!connection) return;
    const PulseConnection::Lock lock(*connection);
    Playback(*connection, clip).run(latest);
}

}  // namespace

PulseSounds::PulseSounds(const Bundle& bundle) : bundle_(bundle), queue_(QStringLiteral("parlivo.sounds")) {}

void PulseSounds::play(const QString& name) {
    queue_.async([this, name, latest = Clock::now() + latestBegin] {
        // After a server that hung, or behind other sounds.
        if (Clock::now() >= latest) return;
        const auto path = bundle_.resource(QStringLiteral("sounds/%1.wav").arg(name));
        if (!path) return;
        if (const auto clip = load(*path)) playBefore(latest, *clip);
    });
}

}  // namespace parlivo
