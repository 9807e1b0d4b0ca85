// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QPushButton>

#include <functional>
#include <optional>

class QKeyEvent;

namespace parlivo {

/// What came of the keys that were pressed.
struct KeyCapture {
    enum class Outcome {
        Pressed,
        Withheld,   ///< the system acts on the press itself, and told of the release only
        Modifiers,  ///< they were let go without another key; the capture goes on
    };
    Outcome outcome = Outcome::Pressed;
    std::optional<KeyCode> key = {};  ///< nullopt for one that can be no hot key
    HotKeyModifiers modifiers = 0;
};

/// A button that, once pressed, takes the next key combination whatever program holds it otherwise. Escape
/// alone, a click, or the loss of the focus calls it off; no other key is without an outcome.
class KeyCaptureButton : public QPushButton {
    Q_OBJECT

  public:
    using Captured = std::function<void(const KeyCapture&)>;

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
    void noteKey(const QEvent& event);
    void keyPressed(const QKeyEvent& event);
    void keyReleased(const QKeyEvent& event);

    const Captured captured_;
    bool capturing_ = false;
    bool keyIsDown_ = false;         ///< a key other than a modifier, since before the capture
    bool onlyModifiers_ = false;     ///< the last key pressed was one
    HotKeyModifiers modifiers_ = 0;  ///< those that were held when the last modifier was pressed
};

}  // namespace parlivo
