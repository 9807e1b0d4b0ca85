// SPDX-License-Identifier: MIT
#pragma once

#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/Desktop.h"
#include "platform/linux/desktop/NotifierHostWatch.h"
#include "platform/linux/desktop/PanelForeground.h"

#include <QTimer>

#include <optional>

namespace parlivo {

/// Places for status items on Linux: panels on the session bus (StatusNotifierItem), and X trays (XEmbed)
/// where there are no others.
///
/// The toolkit decides between the two kinds once a process, when the first icon is made; from then on only
/// places of that kind count. Panels that offer both take the tray selection first and come onto the bus a
/// moment later, so a tray alone is given some time before it settles the matter.
class LinuxStatusItemHost : public StatusItemHost {
  public:
    /// The desktop must outlive this.
    explicit LinuxStatusItemHost(Desktop& desktop) : desktop_(desktop) {}

    void watch(Observer observer) override;
    StatusItemPlace::Foreground foregroundAt(const QRect& icon) override {
        return desktop_.foregroundAt(icon);
    }

  private:
    enum class Kind { Bus, XTray };

    struct Watches {
        explicit Watches(LinuxStatusItemHost& host);

        NotifierHostWatch bus;
        std::unique_ptr<TrayWatch> tray;  // null where there are no X trays
        PanelForeground panel;
        QTimer trayTimer;
    };

    bool trayPresent() const { return watches_->tray && watches_->tray->present(); }
    void placesChanged();
    std::optional<Kind> presentKind();
    StatusItemPlace placeOf(Kind kind) const;
    void report(const std::optional<StatusItemPlace>& place);

    Desktop& desktop_;
    Observer observer_;
    std::optional<Kind> settled_;  // for the rest of the process
    std::optional<StatusItemPlace> reported_;
    std::unique_ptr<Watches> watches_;
};

}  // namespace parlivo
