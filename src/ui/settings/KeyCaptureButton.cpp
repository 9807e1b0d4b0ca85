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
    if (!capturing_) return QPushButton::event(event);
    switch (event->type()) {
        case QEvent::ShortcutOverride:
            event->accept();
            return true;
        case QEvent::KeyPress:
            keyPressed(static_cast<const QKeyEvent&>(*event));
            return true;
        case QEvent::KeyRelease:
            return true;
        default:
            return QPushButton::event(event);
    }
}

void KeyCaptureButton::keyPressed(const QKeyEvent& event) {
    if (event.isAutoRepeat() || isModifier(event.key())) return;
    const HotKeyModifiers modifiers = modifiersOf(event.modifiers());
    stop();
    if (event.key() == Qt::Key_Escape && modifiers == 0) return;
    captured_(Platform::current().hotKeys().keyCodeOf(event.nativeScanCode()), modifiers);
}

void KeyCaptureButton::focusOutEvent(QFocusEvent* event) {
    stop();
    QPushButton::focusOutEvent(event);
}

void KeyCaptureButton::hideEvent(QHideEvent* event) {
    stop();
    QPushButton::hideEvent(event);
}

}  // namespace parlivo
