// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

namespace parlivo {

/// The signal colours of the menu bar and the windows, in the shades that macOS gives them: a little brighter
/// on a dark background.
/// https://developer.apple.com/design/human-interface-guidelines/color (system colours)
enum class SystemColour { Red, Orange, Yellow, Green, Blue, Purple };

enum class Background { Light, Dark };

constexpr QColor systemColour(SystemColour colour, Background background) {
    const bool dark = background == Background::Dark;
    switch (colour) {
        case SystemColour::Red:
            return dark ? QColor(255, 69, 58) : QColor(255, 59, 48);
        case SystemColour::Orange:
            return dark ? QColor(255, 159, 10) : QColor(255, 149, 0);
        case SystemColour::Yellow:
            return dark ? QColor(255, 214, 10) : QColor(255, 204, 0);
        case SystemColour::Green:
            return dark ? QColor(48, 209, 88) : QColor(52, 199, 89);
        case SystemColour::Purple:
            return dark ? QColor(191, 90, 242) : QColor(175, 82, 222);
        case SystemColour::Blue:
            return dark ? QColor(10, 132, 255) : QColor(0, 122, 255);
    }
    return {};
}

}  // namespace parlivo
