// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>

#include <array>
#include <cstdint>
#include <vector>

namespace parlivo {

/// The room that a dock keeps at an edge of the X screen, in device pixels: the property
/// _NET_WM_STRUT_PARTIAL as it is on the wire.
/// https://specifications.freedesktop.org/wm-spec/ ("_NET_WM_STRUT_PARTIAL")
struct Strut {
    static constexpr std::size_t fieldCount = 12;

    std::uint32_t left = 0, right = 0, top = 0, bottom = 0;
    std::uint32_t leftStart = 0, leftEnd = 0, rightStart = 0, rightEnd = 0;
    std::uint32_t topStart = 0, topEnd = 0, bottomStart = 0, bottomEnd = 0;
};

/// What docks leave of a monitor. The distances of a strut count from the edges of the whole X screen, so
/// that a dock at an inner edge between two monitors reaches over the outer one. All in device pixels.
QRect visibleFrame(const QRect& monitor, QSize wholeScreen, const std::vector<Strut>& struts);

}  // namespace parlivo
