// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace parlivo::desktop {

/// The display as another program sees and handles it, on a connection of its own. All coordinates are device
/// pixels of the whole X screen. Returns from each operation when the server has done it.
class Screen {
  public:
    Screen();

    QSize size() const;
    /// What is on the screen there.
    QImage picture(const QRect& area) const;
    QColor pixel(const QPoint& point) const { return picture(QRect(point, QSize(1, 1))).pixelColor(0, 0); }

    /// The window that has the keyboard.
    xcb_window_t focus() const;
    /// The first window on the screen, whoever manages it, with exactly this size. Hidden ones do not count.
    std::optional<QRect> findWindow(QSize size) const;

    void movePointer(const QPoint& point);
    /// Button 1 is the left one, 3 the right one.
    void click(const QPoint& point, std::uint8_t button = 1);

    /// Puts a dock onto the screen that keeps the edges free, as a panel does: left, right, top, bottom and
    /// the beginnings and ends of each (_NET_WM_STRUT_PARTIAL). It stays as long as this object.
    void addDock(const QRect& area, const std::array<std::uint32_t, 12>& strut);

    /// Replaces a window's list of numbers.
    void setProperty(xcb_window_t window, const char* name, const std::vector<std::uint32_t>& values);
    xcb_window_t selectionOwner(const char* selection) const;
    xcb_window_t root() const;

  private:
    xcb_atom_t atom(const char* name) const;
    void sync() const;
    bool isViewable(xcb_window_t window) const;
    QRect geometry(xcb_window_t window) const;

    x11::ConnectionHandle connection_;
};

}  // namespace parlivo::desktop
