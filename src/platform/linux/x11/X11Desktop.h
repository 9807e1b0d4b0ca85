// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/base/OnDemand.h"
#include "platform/linux/desktop/Desktop.h"
#include "platform/linux/x11/QtPasteboard.h"
#include "platform/linux/x11/X11HotKeyService.h"
#include "platform/linux/x11/X11KeyboardSynthesizer.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/qt/QtFloatingPanel.h"

namespace parlivo {

/// A session on an X server.
class X11Desktop : public Desktop {
  public:
    HotKeyService& hotKeys() override { return hotKeys_.get(); }
    KeyboardSynthesizer& keyboard() override { return keyboard_.get(); }
    Pasteboard& pasteboard() override { return pasteboard_.get(); }
    FloatingPanels& floatingPanels() override { return panels_; }
    std::unique_ptr<TrayWatch> watchTray(std::function<void()> changed) override;
    StatusItemPlace::Foreground foregroundAt(const QRect& place) override;
    bool canDeliverText() override { return x11TypingAllowed(); }
    std::optional<QString> startProblem() override { return std::nullopt; }
    QString summary() override;

  private:
    X11Screens screens_;
    QtFloatingPanels panels_{screens_};
    OnDemand<X11HotKeyService> hotKeys_;
    OnDemand<X11KeyboardSynthesizer> keyboard_;
    OnDemand<QtPasteboard> pasteboard_;
};

}  // namespace parlivo
