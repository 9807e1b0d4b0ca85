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
    /// In Italian, for the user; it may change when the desktop has answered. Null without a service.
    std::function<QString()> name = {};
    /// What the user should know of it, or has to do once; null for nothing. As Platform::sessionHints; those
    /// on text are shown as long as there is no way for it.
    std::function<std::vector<SessionHint>()> hints = {};
};

/// How one kind of compositor lets text be pasted that has no protocols for it.
struct PasteWay {
    std::unique_ptr<wayland::ChordKeys> keys;
    std::unique_ptr<Pasteboard> pasteboard;
    QString name;  ///< in Italian, for the user
};

/// What single kinds of compositors add to Wayland's protocols. Each is asked for when it is needed, after
/// the toolkit has started; null members of its answer stand for none.
struct OwnWays {
    std::function<HotKeyWay()> findHotKey;
    std::function<PasteWay()> findPaste;  ///< asked only where the protocols do not suffice
};

/// A session of a Wayland compositor. There applications may neither grab keys nor send them to others, nor
/// place a window, unless the compositor has a protocol for it; each facility goes the way that this one
/// offers. Where there is none for text, what is dictated goes to the clipboard.
class WaylandDesktop : public Desktop {
  public:
    /// Main thread, before the toolkit starts: may choose the way in which it shows its windows.
    explicit WaylandDesktop(OwnWays ways);
    ~WaylandDesktop() override;
    WaylandDesktop(const WaylandDesktop&) = delete;
    WaylandDesktop& operator=(const WaylandDesktop&) = delete;

    HotKeyService& hotKeys() override { return *hotKey().service; }
    KeyboardSynthesizer& keyboard() override;
    Pasteboard& pasteboard() override;
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
    const HotKeyWay& hotKey();
    /// How text is pasted, in Italian; empty as long as there is no way. Any thread.
    QString pasteName();
    void seekPaste();
    void followCompositor();

    const OwnWays ways_;
    std::once_flag hotKeySought_;
    HotKeyWay hotKey_;
    std::mutex pasteMutex_;
    QString pasteName_;                                       // under pasteMutex_
    bool ownPasteSought_ = false;                             // under pasteMutex_
    std::shared_ptr<wayland::WaylandConnection> connection_;  // the keyboard's; replaced under pasteMutex_
    std::unique_ptr<wayland::WaylandKeyboard> keyboard_;
    std::unique_ptr<Pasteboard> pasteboard_;
    std::unique_ptr<FloatingPanels> panels_;
    std::unique_ptr<Pasteboard> ownPasteboard_;  // of `ways_`: goes before the toolkit's
    bool hasDataControl_ = false;
    bool hasLayers_ = false;
};

}  // namespace parlivo
