// SPDX-License-Identifier: MIT
#include "desktop/hotkey/OtherClient.h"

#include "platform/linux/x11/XcbQueries.h"
#include "support/XServer.h"

#include <xcb/xinput.h>

#include <algorithm>
#include <vector>

namespace parlivo::desktop {

using x11::owned;

namespace {

bool isKeyboard(const xcb_input_xi_device_info_t& device) {
    // A disabled device belongs to no master and counts as floating.
    return device.type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD ||
           device.type == XCB_INPUT_DEVICE_TYPE_FLOATING_SLAVE;
}

}  // namespace

OtherClient::OtherClient() : connection_(xcb_connect(nullptr, nullptr)) {}

int OtherClient::grabKey(xcb_keycode_t key, std::uint16_t modifiers) {
    const auto cookie = xcb_grab_key_checked(connection_.get(), 0, root(), modifiers, key,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const x11::ErrorHandle error(xcb_request_check(connection_.get(), cookie));
    return error ? error->error_code : 0;
}

void OtherClient::ungrabKey(xcb_keycode_t key, std::uint16_t modifiers) {
    xcb_ungrab_key(connection_.get(), key, root(), modifiers);
    sync();
}

int OtherClient::grabKeyEverywhere(xcb_keycode_t key, std::uint16_t modifiers) {
    auto* const c = connection_.get();
    if (!x11::startInputExtension(c)) return XCB_IMPLEMENTATION;
    for (const auto keyboard : x11::attachedKeyboards(c)) {
        const int error = grabOnOne(keyboard, key, modifiers);
        if (error != 0) return error;
    }
    return grabKey(key, modifiers);
}

/// Under exactly these modifiers, whatever locks are on otherwise.
int OtherClient::grabOnOne(x11::KeyboardId keyboard, xcb_keycode_t key, std::uint16_t modifiers) {
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const std::uint32_t exactly = modifiers;
    const auto cookie =
        xcb_input_xi_passive_grab_device(connection_.get(), XCB_CURRENT_TIME, root(), XCB_NONE, key, keyboard,
                                         1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                                         XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &events, &exactly);
    const auto reply = owned(xcb_input_xi_passive_grab_device_reply(connection_.get(), cookie, nullptr));
    return reply ? reply->num_modifiers : XCB_VALUE;
}

void OtherClient::ungrabKeyEverywhere(xcb_keycode_t key, std::uint16_t modifiers) {
    const std::uint32_t exactly = modifiers;
    for (const auto keyboard : x11::attachedKeyboards(connection_.get()))
        xcb_input_xi_passive_ungrab_device(connection_.get(), root(), key, keyboard, 1,
                                           XCB_INPUT_GRAB_TYPE_KEYCODE, &exactly);
    ungrabKey(key, modifiers);
}

int OtherClient::keysReceived() {
    sync();
    while (const x11::EventHandle event{xcb_poll_for_event(connection_.get())}) {
        if (event->response_type == XCB_KEY_PRESS) ++keysReceived_;
    }
    return keysReceived_;
}

void OtherClient::announceWindowManager() {
    const xcb_window_t window = root();
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, root(),
                        x11::internAtom(connection_.get(), "_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 32,
                        1, &window);
    sync();
}

bool OtherClient::grabKeyboard() {
    const auto cookie = xcb_grab_keyboard(connection_.get(), 0, root(), XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                                          XCB_GRAB_MODE_ASYNC);
    const auto reply = owned(xcb_grab_keyboard_reply(connection_.get(), cookie, nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

void OtherClient::ungrabKeyboard() {
    xcb_ungrab_keyboard(connection_.get(), XCB_CURRENT_TIME);
    sync();
}

bool OtherClient::moveModifier(xcb_keycode_t key, std::size_t modifier) {
    auto* const c = connection_.get();
    const auto map = owned(xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr));
    if (!map) return false;
    const auto* const keys = xcb_get_modifier_mapping_keycodes(map.get());
    std::vector<xcb_keycode_t> table(keys, keys + xcb_get_modifier_mapping_keycodes_length(map.get()));
    std::ranges::replace(table, key, xcb_keycode_t{0});
    table.at(modifier * map->keycodes_per_modifier) = key;
    const auto cookie = xcb_set_modifier_mapping(c, map->keycodes_per_modifier, table.data());
    const auto reply = owned(xcb_set_modifier_mapping_reply(c, cookie, nullptr));
    return reply && reply->status == XCB_MAPPING_STATUS_SUCCESS;
}

void OtherClient::setKeyboardsEnabled(bool enabled) {
    auto* const c = connection_.get();
    owned(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    const xcb_atom_t property = x11::internAtom(c, "Device Enabled");
    const std::uint8_t value = enabled ? 1 : 0;
    const auto devices = owned(
        xcb_input_xi_query_device_reply(c, xcb_input_xi_query_device(c, XCB_INPUT_DEVICE_ALL), nullptr));
    for (auto i = xcb_input_xi_query_device_infos_iterator(devices.get()); i.rem > 0;
         xcb_input_xi_device_info_next(&i)) {
        if (!isKeyboard(*i.data)) continue;
        xcb_input_xi_change_property(c, i.data->deviceid, XCB_PROP_MODE_REPLACE, 8, property,
                                     XCB_ATOM_INTEGER, 1, &value);
    }
    sync();
}

xcb_window_t OtherClient::root() const {
    return rootOf(connection_.get());
}

void OtherClient::sync() const {
    waitForServer(connection_.get());
}

}  // namespace parlivo::desktop
