#pragma once

#include "platform/StatusItemHost.h"
#include "platform/linux/desktop/NotifierHostWatch.h"
#include "platform/linux/desktop/PanelForeground.h"
#include "platform/linux/desktop/TraySelectionWatch.h"

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
    void watch(Observer observer) override;

  private:
    enum class Kind { Bus, XTray };

    struct Watches {
        explicit Watches(LinuxStatusItemHost& host);

        NotifierHostWatch bus;
        TraySelectionWatch tray;
        PanelForeground panel;
        QTimer patience;
    };

    void placesChanged();
    std::optional<Kind> presentKind();
    StatusItemPlace placeOf(Kind kind) const;
    void report(const std::optional<StatusItemPlace>& place);

    Observer observer_;
    std::optional<Kind> settled_;  // for the rest of the process
    std::optional<StatusItemPlace> reported_;
    std::unique_ptr<Watches> watches_;
};

}  // namespace parlivo
