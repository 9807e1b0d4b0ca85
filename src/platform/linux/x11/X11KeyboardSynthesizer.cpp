// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11KeyboardSynthesizer.h"

#include "platform/linux/x11/KeyEvents.h"
#include "platform/linux/x11/KeySymbols.h"
#include "platform/linux/x11/SpareKeyMap.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <xkbcommon/xkbcommon.h>

#include <utility>

namespace parlivo {

namespace {

/// What Italian texts need and some layouts lack, the most common first. A keyboard has room for about 38.
constexpr QStringView commonCharacters = u"èàòùìé’ÈÀ—“”«»–…€‘ÉÒÙÌ[]@#{}\\|~`^°£§\u00a0";

}  // namespace

struct X11KeyboardSynthesizer::Session {
    explicit Session(std::unique_ptr<x11::X11Keyboard> opened)
        : keyboard(std::move(opened)), keys(*keyboard) {}

    std::unique_ptr<x11::X11Keyboard> keyboard;
    x11::SpareKeyMap keys;
};

bool x11TypingAllowed() {
    return x11::X11Keyboard::open() != nullptr;
}

X11KeyboardSynthesizer::X11KeyboardSynthesizer() = default;
X11KeyboardSynthesizer::~X11KeyboardSynthesizer() = default;

X11KeyboardSynthesizer::Session* X11KeyboardSynthesizer::session() {
    if (session_ && !session_->keyboard->isConnected()) session_.reset();
    if (!session_) {
        if (auto keyboard = x11::X11Keyboard::open())
            session_ = std::make_unique<Session>(std::move(keyboard));
    }
    return session_.get();
}

void X11KeyboardSynthesizer::prepare() {
    if (Session* ready = session()) ready->keys.prefill(x11::keySymbols(commonCharacters));
}

std::unique_ptr<KeyEventSource> X11KeyboardSynthesizer::makeSource(QStringView text) {
    Session* ready = session();
    if (!ready) return nullptr;
    return x11::KeyEvents::make(*ready->keyboard, ready->keys, x11::keySymbols(text));
}

std::unique_ptr<KeyEventSource> X11KeyboardSynthesizer::makeShortcutSource() {
    Session* ready = session();
    if (!ready) return nullptr;
    return x11::KeyEvents::make(*ready->keyboard, ready->keys, {XKB_KEY_Insert});
}

}  // namespace parlivo
