// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/sound/BlockAssembler.h"

#include <algorithm>
#include <span>
#include <vector>

namespace parlivo::fuzz {

namespace {

constexpr std::size_t piece = 11;  // frames, to be out of step with the blocks

/// What a recording should be, beside what the assembler makes of it.
class Recording {
  public:
    explicit Recording(int channels)
        : channels_(static_cast<std::size_t>(channels)),
          assembler_(channels, [this](auto samples, auto frames) {
              expect(samples.size() == frames * channels_, "a block is as long as it says");
              expect(frames > 0 && frames <= AudioCapture::blockFrames, "a block has its size");
              expect(frames == AudioCapture::blockFrames || last_, "only the last one is short");
              delivered_.insert(delivered_.end(), samples.begin(), samples.end());
          }) {}

    void sound(std::size_t frames) {
        std::vector<float> samples(frames * channels_);
        std::generate(samples.begin(), samples.end(), [this] { return next_ += 1; });
        assembler_.append(samples.data(), frames);
        append(samples);
    }
    void silence(std::size_t frames) {
        assembler_.append(nullptr, frames);
        append(std::vector<float>(frames * channels_));
    }
    void end(std::size_t frames) {
        assembler_.cutAt(frames);
        // What has been delivered cannot be taken back.
        limit_ = std::max(frames * channels_, delivered_.size());
        spoken_.resize(std::min(spoken_.size(), limit_));
        last_ = true;
        assembler_.flush();
        expect(delivered_ == spoken_, "all of it arrives, in order, and nothing else");
    }

  private:
    void append(const std::vector<float>& samples) {
        spoken_.insert(spoken_.end(), samples.begin(), samples.end());
    }

    const std::size_t channels_;
    std::vector<float> spoken_;
    std::vector<float> delivered_;
    std::size_t limit_ = 0;
    float next_ = 0;
    bool last_ = false;
    BlockAssembler assembler_;
};

}  // namespace

/// The channels, the cut, then pieces: an odd byte is a hole of the server's.
void attack(const QByteArray& input) {
    if (input.size() < 2) return;
    const auto number = [&](qsizetype at) {
        return static_cast<std::size_t>(static_cast<unsigned char>(input[at]));
    };
    Recording recording(static_cast<int>(number(0) % 8 + 1));
    for (qsizetype at = 2; at < std::min<qsizetype>(input.size(), 24); ++at) {
        if (number(at) % 2 == 0) {
            recording.sound(number(at) * piece);
        } else {
            recording.silence(number(at) * piece);
        }
    }
    recording.end(number(1) * piece * 8);
}

}  // namespace parlivo::fuzz
