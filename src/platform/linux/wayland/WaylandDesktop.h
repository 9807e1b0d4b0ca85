// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/NullDesktop.h"

namespace parlivo {

/// A session of a Wayland compositor. There applications may neither grab keys nor send them to others, nor
/// place a window. What is dictated goes to the clipboard.
class WaylandDesktop : public Desktop {
  public:
    /// Main thread, before the toolkit starts: may choose the way in which it shows its windows.
    WaylandDesktop();

    HotKeyService& hotKeys() override { return hotKeys_; }
    KeyboardSynthesizer& keyboard() override { return keyboard_; }
    Pasteboard& pasteboard() override { return *pasteboard_; }
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
    NullFloatingPanels panels_;
    std::unique_ptr<Pasteboard> pasteboard_;
};

}  // namespace parlivo
