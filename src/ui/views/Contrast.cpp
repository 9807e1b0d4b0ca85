// SPDX-License-Identifier: MIT
#include "ui/views/Contrast.h"

#include <algorithm>
#include <cmath>

namespace parlivo {

namespace {

/// https://www.w3.org/TR/WCAG21/#dfn-relative-luminance
double luminance(const QColor& colour) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// Black and white are equally far from a colour of this luminance.
constexpr double middleLuminance = 0.179;

}  // namespace

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor legible(const QColor& colour, const QColor& background, double ratio) {
    constexpr float step = 0.01F;
    const float direction = luminance(background) > middleLuminance ? -step : step;
    float hue = 0;
    float saturation = 0;
    float lightness = 0;
    colour.getHslF(&hue, &saturation, &lightness);
    QColor result = colour;
    while (contrast(result, background) < ratio && lightness > 0 && lightness < 1) {
        lightness = std::clamp(lightness + direction, 0.0F, 1.0F);
        result.setHslF(hue, saturation, lightness);
    }
    return result;
}

QColor composited(const QColor& colour, const QColor& background) {
    const auto mix = [share = colour.alphaF()](float above, float below) {
        return above * share + below * (1 - share);
    };
    return QColor::fromRgbF(mix(colour.redF(), background.redF()), mix(colour.greenF(), background.greenF()),
                            mix(colour.blueF(), background.blueF()));
}

}  // namespace parlivo
