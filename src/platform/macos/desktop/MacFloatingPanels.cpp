// SPDX-License-Identifier: MIT
#include "platform/macos/desktop/MacFloatingPanels.h"

#include "platform/macos/desktop/PanelWindow.h"
#include "platform/qt/QtFloatingPanel.h"

namespace parlivo {

namespace {

class MacFloatingPanel : public QtFloatingPanel {
  public:
    using QtFloatingPanel::QtFloatingPanel;

    /// The toolkit gives a window its own level and behaviour whenever it shows it.
    void show() override {
        QtFloatingPanel::show();
        makePanelOf(window().winId());
        orderFront(window().winId());
    }
};

}  // namespace

std::unique_ptr<FloatingPanel> MacFloatingPanels::makePanel(const PanelPlacing& placing) {
    return std::make_unique<MacFloatingPanel>(placing, screens_, QtFloatingPanel::Shadow::BySystem);
}

}  // namespace parlivo
