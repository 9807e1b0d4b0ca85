#pragma once

#include "platform/linux/base/OnDemand.h"
#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/x11/QtPasteboard.h"

namespace parlivo {

/// A session of a Wayland compositor. Applications may neither grab keys nor send them to others there.
class WaylandDesktop : public Desktop {
  public:
    HotKeyService& hotKeys() override { return hotKeys_; }
    KeyboardSynthesizer& keyboard() override { return keyboard_; }
    Pasteboard& pasteboard() override { return pasteboard_.get(); }
    FloatingPanels& floatingPanels() override { return panels_; }
    std::unique_ptr<TrayWatch> watchTray(std::function<void()>) override { return nullptr; }
    StatusItemPlace::Foreground foregroundAt(const QRect&) override {
        return StatusItemPlace::Foreground::Unknown;
    }
    bool canDeliverText() override { return false; }
    std::optional<QString> startProblem() override;
    QString summary() override;

  private:
    NullHotKeyService hotKeys_;
    NullKeyboard keyboard_;
    OnDemand<QtPasteboard> pasteboard_;
    NullFloatingPanels panels_;
};

}  // namespace parlivo
