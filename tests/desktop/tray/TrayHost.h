// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <QColor>
#include <QRect>
#include <QSocketNotifier>

#include <optional>
#include <string>

namespace parlivo::desktop {

/// An X tray of the test's own that shows the one icon that came last. It works while the test waits
/// (waitFor). https://specifications.freedesktop.org/systemtray-spec/
class TrayHost {
  public:
    /// Whether the panel announces its colours, too.
    enum class Panel { Light, Dark, SilentLight, SilentDark };

    /// The tray fills `place` on the screen; the icon is in its middle. In pixels.
    explicit TrayHost(Panel panel = Panel::SilentLight, const QRect& place = {0, 0, 40, 40},
                      int iconLength = 22);
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;

    /// Where the icon is on the screen, when there is one.
    std::optional<QRect> icon() const;
    /// The colour of the panel.
    QColor ground() const { return ground_; }

  private:
    void paintPanel();
    void ownTraySelection();
    void announceColours(Panel panel);
    void readEvents();
    void dock(xcb_window_t icon);
    QRect iconPlace() const;
    xcb_atom_t atom(const std::string& name) const;
    xcb_window_t root() const;

    x11::ConnectionHandle connection_;
    QSocketNotifier notifier_;
    QColor ground_;
    QRect place_;
    int iconLength_;
    xcb_window_t panel_ = XCB_NONE;
    xcb_window_t icon_ = XCB_NONE;
};

}  // namespace parlivo::desktop
