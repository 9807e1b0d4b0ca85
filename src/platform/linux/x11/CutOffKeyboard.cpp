// SPDX-License-Identifier: MIT
#include "platform/linux/x11/CutOffKeyboard.h"

#include "platform/linux/x11/XcbHandles.h"

#include <xcb/xtest.h>

#include <span>
#include <utility>

namespace parlivo::x11 {

namespace {

/// Those that the master still counts as down.
void releaseOnMaster(xcb_connection_t* connection, const std::set<xcb_keycode_t>& keys) {
    const auto* const xtest = xcb_get_extension_data(connection, &xcb_test_id);
    const auto map = owned(xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr));
    if (!map || xtest == nullptr || xtest->present == 0) return;
    for (const xcb_keycode_t key : keys) {
        if ((std::span(map->keys)[key / 8U] >> (key % 8U) & 1U) == 0) continue;
        xcb_test_fake_input(connection, XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    }
    xcb_flush(connection);
}

}  // namespace

void CutOffKeyboard::follow(xcb_connection_t* connection, const GrabbedKey& key) {
    if (key.keyboard == 0) return;
    const bool released = key.edge == GrabbedKey::Edge::Release;
    if (!held_) {
        if (!released) held_ = key;
        return;
    }
    if (key.keyboard != held_->keyboard) return;
    if (!released) {
        released_.erase(key.key);
    } else if (key.key != held_->key) {
        released_.insert(key.key);
    } else {
        held_.reset();
        if (const auto keys = std::exchange(released_, {}); !keys.empty()) releaseOnMaster(connection, keys);
    }
}

}  // namespace parlivo::x11
