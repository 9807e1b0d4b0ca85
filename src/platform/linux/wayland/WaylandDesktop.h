// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WaylandKeyboard.h"

#include <functional>
#include <mutex>

namespace parlivo {

/// How one kind of compositor lets a hot key be taken: Wayland has no way of its own.
struct HotKeyWay {
    std::unique_ptr<HotKeyService> service;
    QString name;  ///< in Italian, for the user
    /// What the user should know of it, or has to do once; null for nothing. As Platform::sessionHints.
    std::function<std::vector<SessionHint>()> hints = {};
};

/// A session of a Wayland compositor. There applications may neither grab keys nor send them to others, nor
/// place a window, unless the compositor has a protocol for it; each facility goes the way that this one
/// offers. Where there is none for text, what is dictated goes to the clipboard.
class WaylandDesktop : public Desktop {
  public:
    /// `findHotKey` is asked when the hot key is, after the toolkit has started; a null service stands for
    /// none. Main thread, before the toolkit starts: may choose the way in which it shows its windows.
    explicit WaylandDesktop(std::function<HotKeyWay()> findHotKey);
    ~WaylandDesktop() override;
    WaylandDesktop(const WaylandDesktop&) = delete;
    WaylandDesktop& operator=(const WaylandDesktop&) = delete;

    HotKeyService& hotKeys() override { return *hotKey().service; }
    KeyboardSynthesizer& keyboard() override { return *keyboard_; }
    Pasteboard& pasteboard() override { return *pasteboard_; }
    FloatingPanels& floatingPanels() override { return *panels_; }
    std::unique_ptr<TrayWatch> watchTray(std::function<void()>) override { return nullptr; }
    StatusItemPlace::Foreground foregroundAt(const QRect&) override {
        return StatusItemPlace::Foreground::Unknown;
    }
    bool canDeliverText() override;
    std::optional<QString> startProblem() override;
    QString summary() override;
    std::optional<QString> sessionNote() override { return summary(); }
    std::vector<SessionHint> sessionHints() override;

  private:
    bool canPaste() const { return hasDataControl_ && keyboard_->canPressKeys(); }

    const HotKeyWay& hotKey();

    const std::function<HotKeyWay()> findHotKey_;
    std::once_flag hotKeySought_;
    HotKeyWay hotKey_;
    std::unique_ptr<wayland::WaylandConnection> connection_;  // the keyboard's
    std::unique_ptr<wayland::WaylandKeyboard> keyboard_;
    std::unique_ptr<Pasteboard> pasteboard_;
    std::unique_ptr<FloatingPanels> panels_;
    bool hasDataControl_ = false;
    bool hasLayers_ = false;
};

}  // namespace parlivo
