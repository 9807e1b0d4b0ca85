// SPDX-License-Identifier: MIT
#include "audio/overlay/WaveformGeometry.h"

#include <algorithm>
#include <cmath>

namespace parlivo {

namespace {

constexpr double ribbonBegin = 0.045;  // of the width; nothing is drawn left of it
constexpr double ribbonEnd = 0.955;
constexpr double ribbonLength = 0.91;
constexpr double strandStep = 3;
constexpr double centreStep = 2;

double smoothstep(double x) {
    const double clamped = std::clamp(x, 0.0, 1.0);
    return clamped * clamped * (3 - 2 * clamped);
}

double gaussian(double s, double centre, double width) {
    const double distance = (s - centre) / width;
    return std::exp(-distance * distance);
}

/// The right end fades to a tenth only.
double envelope(double s) {
    return smoothstep(s / 0.09) * (1 - 0.9 * smoothstep((s - 0.86) / 0.14));
}

double profile(double s) {
    return 0.46 * gaussian(s, 0.37, 0.08) - 0.13 * gaussian(s, 0.12, 0.075) -
           0.21 * gaussian(s, 0.55, 0.085) + 0.07 * gaussian(s, 0.71, 0.09) - 0.06 * gaussian(s, 0.85, 0.09);
}

double spread(double s) {
    return 0.5 + 4.4 * gaussian(s, 0.37, 0.1) + 1.8 * gaussian(s, 0.55, 0.12);
}

}  // namespace

std::array<Strand, WaveformGeometry::strandCount> WaveformGeometry::makeStrands() {
    std::array<Strand, strandCount> strands;
    for (std::size_t index = 0; index < strandCount; ++index) {
        const auto i = static_cast<double>(index);
        strands.at(index) = {.u = 2 * (i / (strandCount - 1)) - 1, .ph = i * 2.399};
    }
    return strands;
}

double WaveformGeometry::strandAlpha(const Strand& strand) {
    const double distance = 1.35 * strand.u;
    return 0.03 + 0.08 * std::exp(-distance * distance);
}

WaveformGeometry::Phase::Phase(double fast, double slow)
    : sinFast(std::sin(fast)), cosFast(std::cos(fast)), sinSlow(std::sin(slow)), cosSlow(std::cos(slow)) {}

/// 0.55·sin(fast + 9.5·s) + 0.45·sin(slow + 4.2·s), by the sum of angles.
double WaveformGeometry::Phase::waveAt(const Abscissa& at) const {
    return 0.55 * (sinFast * at.cosFast + cosFast * at.sinFast) +
           0.45 * (sinSlow * at.cosSlow + cosSlow * at.sinSlow);
}

WaveformGeometry::Abscissa WaveformGeometry::makeAbscissa(double x, double s) {
    return {.x = x,
            .envelope = envelope(s),
            .profile = profile(s),
            .spread = spread(s),
            .upperWidening = 1 + 1.4 * gaussian(s, 0.37, 0.09),
            .sinFast = std::sin(9.5 * s),
            .cosFast = std::cos(9.5 * s),
            .sinSlow = std::sin(4.2 * s),
            .cosSlow = std::cos(4.2 * s)};
}

std::vector<WaveformGeometry::Abscissa> WaveformGeometry::abscissae(double width, double step) {
    std::vector<Abscissa> result;
    const auto count = static_cast<int>(width / step) + 1;
    for (int i = 0; i < count; ++i) {
        const double x = i * step;
        const double p = x / width;
        if (p >= ribbonBegin && p <= ribbonEnd)
            result.push_back(makeAbscissa(x, (p - ribbonBegin) / ribbonLength));
    }
    return result;
}

void WaveformGeometry::update(QSizeF size, double seconds, double level) {
    if (size != size_) {
        size_ = size;
        strandAbscissae_ = abscissae(size.width(), strandStep);
        centreAbscissae_ = abscissae(size.width(), centreStep);
        points_.reserve(centreAbscissae_.size());
    }
    seconds_ = seconds;
    amplitude_ = 0.72 * size.height() * (0.55 + 0.5 * level);
    waveHeight_ = 0.4 + 1.4 * level;
    spreadFactor_ = 1 + 1.5 * level;
    base_ = baseLine(size.height());
}

double WaveformGeometry::baseLine(double height) {
    // 0.53 of the height above the bottom.
    return height - (0.5 * height + 0.03 * height);
}

std::span<const QPointF> WaveformGeometry::strand(const Strand& strand) {
    const Phase phase(0.55 * seconds_ + strand.ph, 0.38 * seconds_ - 0.7 * strand.ph);
    const double fan = strand.u * spreadFactor_;
    points_.clear();
    for (const Abscissa& at : strandAbscissae_) {
        const double widening = strand.u > 0 ? at.upperWidening : 1;
        const double y =
            amplitude_ * at.profile + phase.waveAt(at) * waveHeight_ + fan * at.spread * widening;
        points_.emplace_back(at.x, base_ + at.envelope * y);
    }
    return points_;
}

std::span<const QPointF> WaveformGeometry::centreLine() {
    const Phase phase(0.55 * seconds_, 0.38 * seconds_);
    points_.clear();
    for (const Abscissa& at : centreAbscissae_) {
        const double y = amplitude_ * at.profile + 0.5 * phase.waveAt(at) * waveHeight_;
        points_.emplace_back(at.x, base_ + at.envelope * y);
    }
    return points_;
}

}  // namespace parlivo
