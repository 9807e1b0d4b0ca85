// SPDX-License-Identifier: MIT
#pragma once

#include "audio/AudioRecorder.h"
#include "support/PlatformTest.h"

#include <sndfile.hh>

#include <optional>
#include <vector>

namespace parlivo {

/// A recorder whose clock and microphone the test holds.
class AudioRecorderTest : public PlatformTest {
  protected:
    AudioRecorderTest() : recorder([this] { return now; }) {}

    fake::AudioInput& microphone() { return platform.audioInput(); }
    bool speakBlocks(int blocks, float sample) {
        const auto samples =
            AudioCapture::blockFrames * static_cast<std::size_t>(blocks * microphone().format.channels);
        return microphone().speak(std::vector<float>(samples, sample));
    }
    QStringList files() { return QDir(platform.directories().temporary()).entryList(QDir::Files); }

    /// Holds the key for that long, without a sound.
    std::optional<QString> record(Clock::Duration length) {
        recorder.start();
        now += length;
        return recorder.stop();
    }

    static std::vector<float> samplesIn(const QString& path) {
        SndfileHandle file(path.toStdString());
        std::vector<float> samples(static_cast<std::size_t>(file.frames() * file.channels()));
        file.readf(samples.data(), file.frames());
        return samples;
    }

    Clock::TimePoint now = Clock::now();
    AudioRecorder recorder;
};

}  // namespace parlivo
