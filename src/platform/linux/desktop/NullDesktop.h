// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/Desktop.h"

#include <utility>

namespace parlivo {

/// Refuses every hot key.
class NullHotKeyService : public HotKeyService {
  public:
    /// `edges` is what it tells of them: None where the user may bind a key in another way.
    explicit NullHotKeyService(Edges edges = Edges::Both) : edges_(edges) {}

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    /// The status is ENOTSUP.
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Edges edges() const override { return edges_; }

  private:
    const Edges edges_;
};

/// Has no way to type.
class NullKeyboard : public KeyboardSynthesizer {
  public:
    void prepare() override {}
    bool typesText() const override { return false; }
    std::unique_ptr<KeyEventSource> makeSource(QStringView) override { return nullptr; }
    std::unique_ptr<KeyEventSource> makeShortcutSource() override { return nullptr; }
};

/// Has no clipboard.
class NullPasteboard : public Pasteboard {
  public:
    PasteboardTexts texts() override { return {}; }
    bool setText(const QString&, History) override { return false; }
    void restore(const PasteboardTexts&) override {}
};

/// Shows no panel.
class NullFloatingPanels : public FloatingPanels {
  public:
    std::unique_ptr<FloatingPanel> makePanel(const PanelPlacing&) override { return nullptr; }
};

/// No graphical session: nothing works, and the reason is what the user is told.
class NullDesktop : public Desktop {
  public:
    explicit NullDesktop(QString reason) : reason_(std::move(reason)) {}

    HotKeyService& hotKeys() override { return hotKeys_; }
    KeyboardSynthesizer& keyboard() override { return keyboard_; }
    Pasteboard& pasteboard() override { return pasteboard_; }
    FloatingPanels& floatingPanels() override { return panels_; }
    std::unique_ptr<TrayWatch> watchTray(std::function<void()>) override { return nullptr; }
    StatusItemPlace::Foreground foregroundAt(const QRect&) override {
        return StatusItemPlace::Foreground::Unknown;
    }
    bool canDeliverText() override { return false; }
    std::optional<QString> startProblem() override { return reason_; }
    QString summary() override { return reason_; }

  private:
    const QString reason_;
    NullHotKeyService hotKeys_;
    NullKeyboard keyboard_;
    NullPasteboard pasteboard_;
    NullFloatingPanels panels_;
};

}  // namespace parlivo
