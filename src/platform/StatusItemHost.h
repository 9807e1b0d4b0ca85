// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

#include <functional>
#include <memory>
#include <optional>

namespace parlivo {

/// A place on the desktop that shows status items: the menu bar, a panel's tray.
struct StatusItemPlace {
    /// What plain symbols are drawn in there.
    enum class Foreground {
        Unknown,   ///< not published: read from the screen, or the applications' own text colour
        Dark,      ///< on a light panel
        Light,     ///< on a dark panel
        Template,  ///< the place itself chooses, by nothing but the symbol's shape
    };
    /// Who draws an item's menu.
    enum class Menus {
        DrawnByUs,     ///< an ordinary pop-up window
        DrawnByPanel,  ///< titles travel to the panel, which reads an underscore as the mark of a shortcut
        Native,        ///< the system's own kind of menu, which the place opens itself
    };

    Foreground foreground = Foreground::Unknown;
    Menus menus = Menus::DrawnByUs;

    bool operator==(const StatusItemPlace&) const = default;
};

/// Knows whether there is a place for status items. It may come after the program has started, go, and come
/// back. Main thread.
class StatusItemHost {
  public:
    /// The place as it is now; nullopt if there is none. A place that was replaced by another is first
    /// reported gone.
    using Observer = std::function<void(const std::optional<StatusItemPlace>& place)>;

    virtual ~StatusItemHost() = default;

    /// Calls `observer` with the place there is, now or soon, and at every change from then on. One observer
    /// at a time; an empty one ends the watch.
    virtual void watch(Observer observer) = 0;

    /// In which colour something can be read at `icon`, a rectangle of the screen, now: for places that do
    /// not tell. Unknown where the screen may not be looked at.
    virtual StatusItemPlace::Foreground foregroundAt(const QRect& icon) = 0;
};

}  // namespace parlivo
