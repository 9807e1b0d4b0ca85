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
      locks_(other.locks_) {}

KeyGrab& KeyGrab::operator=(KeyGrab&& other) noexcept {
    if (this == &other) return *this;
    release();
    connection_ = std::exchange(other.connection_, nullptr);
    root_ = other.root_;
    combination_ = other.combination_;
    locks_ = other.locks_;
    return *this;
}

KeyGrab::~KeyGrab() {
    release();
}

int KeyGrab::grabAll() const {
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
    // Ungrabbing what another client holds does nothing, so a half-refused set needs no book-keeping.
    for (const std::uint16_t locks : locks_.combinations()) {
        xcb_ungrab_key(connection_, combination_.key, root_,
                       static_cast<std::uint16_t>(combination_.modifiers | locks));
    }
    xcb_flush(connection_);
}

}  // namespace parlivo::x11
