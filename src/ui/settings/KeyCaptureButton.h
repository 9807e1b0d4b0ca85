// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QPushButton>

#include <functional>
#include <optional>

class QKeyEvent;

namespace parlivo {

/// A button that, once pressed, takes the next key combination whatever program holds it otherwise. Escape
/// alone, a click, or the loss of the focus calls it off.
class KeyCaptureButton : public QPushButton {
    Q_OBJECT

  public:
    /// `key` is nullopt for a key that can be no hot key.
    using Captured = std::function<void(std::optional<KeyCode> key, HotKeyModifiers modifiers)>;

    explicit KeyCaptureButton(Captured captured, QWidget* parent = nullptr);
    ~KeyCaptureButton() override;
    KeyCaptureButton(const KeyCaptureButton&) = delete;
    KeyCaptureButton& operator=(const KeyCaptureButton&) = delete;

  protected:
    bool event(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void start();
    void stop();
    void keyPressed(const QKeyEvent& event);

    const Captured captured_;
    bool capturing_ = false;
};

}  // namespace parlivo
