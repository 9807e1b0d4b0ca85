// SPDX-License-Identifier: MIT
#include "ui/settings/KeyCaptureButton.h"

#include "platform/Platform.h"

#include <QKeyEvent>

#include <array>
#include <utility>

namespace parlivo {

namespace {

bool isModifier(int key) {
    switch (key) {
        case Qt::Key_Shift:
        case Qt::Key_Control:
        case Qt::Key_Alt:
        case Qt::Key_AltGr:
        case Qt::Key_Meta:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
            return true;
        default:
            return false;
    }
}

bool isLock(int key) {
    switch (key) {
        case Qt::Key_CapsLock:
        case Qt::Key_NumLock:
        case Qt::Key_ScrollLock:
            return true;
        default:
            return false;
    }
}

HotKeyModifiers modifiersOf(Qt::KeyboardModifiers held) {
    constexpr std::array pairs{std::pair{Qt::ControlModifier, HotKeyModifier::control},
                               std::pair{Qt::AltModifier, HotKeyModifier::option},
                               std::pair{Qt::MetaModifier, HotKeyModifier::command},
                               std::pair{Qt::ShiftModifier, HotKeyModifier::shift}};
    HotKeyModifiers modifiers = 0;
    for (const auto& [toolkits, ours] : pairs) {
        if (held.testFlag(toolkits)) modifiers |= ours;
    }
    return modifiers;
}

}  // namespace

KeyCaptureButton::KeyCaptureButton(Captured captured, QWidget* parent)
    : QPushButton(parent), captured_(std::move(captured)) {
    setAutoDefault(true);
    connect(this, &QPushButton::clicked, this, [this] {
        if (capturing_) {
            stop();
        } else {
            start();
        }
    });
    stop();
}

KeyCaptureButton::~KeyCaptureButton() {
    if (capturing_) releaseKeyboard();
}

void KeyCaptureButton::start() {
    capturing_ = true;
    onlyModifiers_ = false;
    modifiers_ = 0;
    setText(tr("Premi ora la combinazione (Esc annulla)"));
    setFocus();
    // Also from the window manager, which would take combinations of its own before us.
    grabKeyboard();
}

void KeyCaptureButton::stop() {
    if (std::exchange(capturing_, false)) releaseKeyboard();
    setText(tr("Scegli la combinazione…"));
}

bool KeyCaptureButton::event(QEvent* event) {
    if (!capturing_) {
        noteKey(*event);
        return QPushButton::event(event);
    }
    switch (event->type()) {
        case QEvent::ShortcutOverride:
            event->accept();
            return true;
        case QEvent::KeyPress:
            keyPressed(static_cast<const QKeyEvent&>(*event));
            return true;
        case QEvent::KeyRelease:
            keyReleased(static_cast<const QKeyEvent&>(*event));
            return true;
        default:
            return QPushButton::event(event);
    }
}

/// The key that presses the button is let go during the capture.
void KeyCaptureButton::noteKey(const QEvent& event) {
    if (event.type() == QEvent::Shortcut) keyIsDown_ = true;
    if (event.type() != QEvent::KeyPress && event.type() != QEvent::KeyRelease) return;
    const auto& key = static_cast<const QKeyEvent&>(event);
    if (!key.isAutoRepeat() && !isModifier(key.key())) keyIsDown_ = event.type() == QEvent::KeyPress;
}

void KeyCaptureButton::keyPressed(const QKeyEvent& event) {
    if (event.isAutoRepeat()) return;
    onlyModifiers_ = isModifier(event.key());
    const HotKeyModifiers modifiers = modifiersOf(event.modifiers());
    if (onlyModifiers_) {
        modifiers_ = modifiers;
        return;
    }
    stop();
    if (event.key() == Qt::Key_Escape && modifiers == 0) return;
    KeyCapture capture{.modifiers = modifiers};
    if (!isLock(event.key())) capture.key = Platform::current().hotKeys().keyCodeOf(event.nativeScanCode());
    captured_(capture);
}

void KeyCaptureButton::keyReleased(const QKeyEvent& event) {
    using Outcome = KeyCapture::Outcome;
    if (event.isAutoRepeat()) return;
    if (isModifier(event.key())) {
        if (std::exchange(onlyModifiers_, false)) captured_({.outcome = Outcome::Modifiers});
        return;
    }
    if (std::exchange(keyIsDown_, false)) return;
    stop();
    // The modifiers may have been let go before it.
    captured_({.outcome = Outcome::Withheld,
               .key = Platform::current().hotKeys().keyCodeOf(event.nativeScanCode()),
               .modifiers = modifiers_ | modifiersOf(event.modifiers())});
}

void KeyCaptureButton::focusOutEvent(QFocusEvent* event) {
    stop();
    keyIsDown_ = false;
    QPushButton::focusOutEvent(event);
}

void KeyCaptureButton::hideEvent(QHideEvent* event) {
    stop();
    QPushButton::hideEvent(event);
}

}  // namespace parlivo
