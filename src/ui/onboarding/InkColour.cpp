// SPDX-License-Identifier: MIT
#include "ui/onboarding/InkColour.h"

#include "ui/views/Labels.h"

namespace parlivo {

namespace {
constexpr float paleOpacity = 0.35F;
constexpr float edgeOpacity = 0.62F;
}  // namespace

QColor inkColour(const QPalette& palette) {
    return primaryColour(palette);
}

QColor paleInkColour(const QPalette& palette) {
    QColor colour = inkColour(palette);
    colour.setAlphaF(paleOpacity);
    return colour;
}

QColor edgeInkColour(const QPalette& palette) {
    QColor colour = inkColour(palette);
    colour.setAlphaF(edgeOpacity);
    return colour;
}

}  // namespace parlivo
