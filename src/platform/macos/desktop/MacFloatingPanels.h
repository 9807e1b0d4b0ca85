// SPDX-License-Identifier: MIT
#pragma once

#include "platform/FloatingPanel.h"
#include "platform/Screens.h"

namespace parlivo {

/// The toolkit's panel, in the window server's status level and on every space.
class MacFloatingPanels : public FloatingPanels {
  public:
    /// `screens` must outlive this and the panels.
    explicit MacFloatingPanels(Screens& screens) : screens_(screens) {}

    std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing& placing) override;

  private:
    Screens& screens_;
};

}  // namespace parlivo
