// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QString>

#include <array>

namespace parlivo::desktop {

/// The icon of one state of a dictation, with the pictures that were looked at and found right.
struct StateIcon {
    enum class Panel { Light, Dark };

    const char* symbol;
    const char* tint;

    /// As IndicatorsMain.cpp takes them.
    QString words() const;
    /// 22 pixels square, on a transparent ground.
    QImage picture(Panel panel) const;
    /// The same as it shows on a panel of that colour.
    QImage picture(Panel panel, const QColor& ground) const;
};

inline constexpr std::array stateIcons{
    StateIcon{"mic", "none"},        StateIcon{"mic.fill", "red"},
    StateIcon{"waveform", "orange"}, StateIcon{"wand.and.stars", "purple"},
    StateIcon{"keyboard", "blue"},
};

/// Whether the pictures are of one size and no channel of any pixel differs by more than rounding does.
bool looksLike(const QImage& actual, const QImage& expected);

}  // namespace parlivo::desktop
