// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

/// The loudness that the waveform shows: 0 (silence) to 1, in 32-bit float throughout. Any thread; no
/// allocation.
namespace parlivo::LevelMeter {

/// Ordinary speech has a root mean square of about a tenth of full scale: this brings it near 1.
inline constexpr float gain = 9.0F;
// Fast attack and slow release, so that the picture follows syllables without flickering.
inline constexpr float attack = 0.6F;
inline constexpr float release = 0.18F;

/// Root mean square of the first of `channels` interleaved channels.
inline float rootMeanSquare(std::span<const float> samples, std::size_t channels) {
    const std::size_t frames = samples.size() / channels;
    if (frames == 0) return 0;
    // Several sums, because the additions to a single one would have to wait for each other.
    constexpr std::size_t lanes = 16;
    std::array<float, lanes> sums{};
    const std::size_t whole = frames - frames % lanes;
    for (std::size_t frame = 0; frame < whole; frame += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const float sample = samples[(frame + lane) * channels];
            sums[lane] += sample * sample;
        }
    for (std::size_t frame = whole; frame < frames; ++frame)
        sums[0] += samples[frame * channels] * samples[frame * channels];
    float sum = 0;
    for (const float part : sums) sum += part;
    return std::sqrt(sum / static_cast<float>(frames));
}

/// The target level of one block of sound. (A sample that is not a number counts as full scale.)
inline float target(std::span<const float> samples, std::size_t channels) {
    return std::min(1.0F, rootMeanSquare(samples, channels) * gain);
}

/// The level after a block with this target.
inline float smoothed(float previous, float target) {
    const float weight = previous < target ? attack : release;
    return target * weight + previous * (1.0F - weight);
}

}  // namespace parlivo::LevelMeter
