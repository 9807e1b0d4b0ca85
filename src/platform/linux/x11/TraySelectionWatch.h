// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/TrayWatch.h"
#include "platform/linux/x11/XcbHandles.h"

#include <QSocketNotifier>

#include <cstdint>
#include <functional>
#include <memory>

namespace parlivo {

/// Knows whether a tray owns the X screen's tray selection, and what it draws in. On an X connection of its
/// own. Main thread.
/// https://specifications.freedesktop.org/systemtray-spec/
class TraySelectionWatch : public TrayWatch {
  public:
    /// `changed` is called whenever `present` or `foreground` may have changed; also when a tray was replaced
    /// by another, with `present` false in between. Without an X display there is never a tray.
    explicit TraySelectionWatch(std::function<void()> changed);

    bool present() const override { return tray_ != XCB_NONE; }
    StatusItemPlace::Foreground foreground() const override { return foreground_; }

  private:
    bool connect();
    void readEvents();
    void handle(const xcb_generic_event_t& event);
    void setTray(xcb_window_t tray);
    void readForeground();

    std::function<void()> changed_;
    x11::ConnectionHandle connection_;
    std::unique_ptr<QSocketNotifier> notifier_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_atom_t colours_ = XCB_NONE;
    std::uint8_t selectionNotify_ = 0;
    xcb_window_t tray_ = XCB_NONE;
    StatusItemPlace::Foreground foreground_ = StatusItemPlace::Foreground::Unknown;
};

}  // namespace parlivo
