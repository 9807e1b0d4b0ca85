// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyGrab.h"

#include "platform/linux/x11/XcbHandles.h"

#include <utility>
#include <vector>

namespace parlivo::x11 {

std::variant<KeyGrab, int> KeyGrab::take(xcb_connection_t* connection, xcb_window_t root,
                                         KeyCombination combination, const LockModifiers& locks) {
    KeyGrab grab(connection, root, combination, locks);
    if (const int error = grab.grabAll(); error != 0) return error;
    return grab;
}

KeyGrab::KeyGrab(xcb_connection_t* connection, xcb_window_t root, KeyCombination combination,
                 const LockModifiers& locks)
    : connection_(connection), root_(root), combination_(combination), locks_(locks) {}

KeyGrab::KeyGrab(KeyGrab&& other) noexcept
    : connection_(std::exchange(other.connection_, nullptr)),
      root_(other.root_),
      combination_(other.combination_),
      locks_(other.locks_),
      keyboards_(std::move(other.keyboards_)) {}

KeyGrab& KeyGrab::operator=(KeyGrab&& other) noexcept {
    if (this == &other) return *this;
    release();
    connection_ = std::exchange(other.connection_, nullptr);
    root_ = other.root_;
    combination_ = other.combination_;
    locks_ = other.locks_;
    keyboards_ = std::move(other.keyboards_);
    return *this;
}

KeyGrab::~KeyGrab() {
    release();
}

int KeyGrab::grabAll() {
    const int error = grabOnMaster();
    if (error != XCB_ACCESS) return error;
    // What was had of it would come to us twice.
    releaseOnMaster();
    return grabOnKeyboards() == 0 ? 0 : error;
}

int KeyGrab::grabOnKeyboards() {
    if (!startInputExtension(connection_)) return XCB_ACCESS;
    watchKeyboards(connection_, root_);
    for (const KeyboardId keyboard : attachedKeyboards(connection_)) {
        keyboards_.push_back(keyboard);
        if (const int error = grabOnKeyboard(connection_, root_, keyboard, combination_, locks_);
            error != 0) {
            releaseOnKeyboards();
            return error;
        }
    }
    return keyboards_.empty() ? XCB_ACCESS : 0;
}

int KeyGrab::grabOnMaster() const {
    constexpr std::uint8_t eventsToRoot = 0;
    std::vector<xcb_void_cookie_t> cookies;
    for (const std::uint16_t locks : locks_.combinations()) {
        const auto modifiers = static_cast<std::uint16_t>(combination_.modifiers | locks);
        cookies.push_back(xcb_grab_key_checked(connection_, eventsToRoot, root_, modifiers, combination_.key,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    int firstError = 0;
    for (const auto cookie : cookies) {
        const ErrorHandle error(xcb_request_check(connection_, cookie));
        if (error && firstError == 0) firstError = error->error_code;
    }
    return firstError;
}

void KeyGrab::release() {
    if (connection_ == nullptr) return;
    if (isOnKeyboards()) {
        releaseOnKeyboards();
    } else {
        releaseOnMaster();
    }
    xcb_flush(connection_);
}

void KeyGrab::releaseOnKeyboards() {
    for (const KeyboardId keyboard : keyboards_)
        ungrabOnKeyboard(connection_, root_, keyboard, combination_, locks_);
    keyboards_.clear();
}

void KeyGrab::releaseOnMaster() const {
    // Ungrabbing what another client holds does nothing, so a half-refused set needs no book-keeping.
    for (const std::uint16_t locks : locks_.combinations()) {
        xcb_ungrab_key(connection_, combination_.key, root_,
                       static_cast<std::uint16_t>(combination_.modifiers | locks));
    }
}

}  // namespace parlivo::x11
