// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyboardGrabs.h"

#include "platform/linux/x11/XcbHandles.h"

#include <span>

namespace parlivo::x11 {

namespace {

std::vector<std::uint32_t> modifierSets(const KeyCombination& combination, const LockModifiers& locks) {
    std::vector<std::uint32_t> sets;
    for (const std::uint16_t lock : locks.combinations()) sets.push_back(combination.modifiers | lock);
    return sets;
}

}  // namespace

bool startInputExtension(xcb_connection_t* connection) {
    const auto* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || extension->present == 0) return false;
    const auto query = xcb_input_xi_query_version(connection, 2, 0);
    const auto version = owned(xcb_input_xi_query_version_reply(connection, query, nullptr));
    return version && version->major_version >= 2;
}

std::vector<KeyboardId> attachedKeyboards(xcb_connection_t* connection) {
    std::vector<KeyboardId> keyboards;
    const auto query = xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL);
    const auto devices = owned(xcb_input_xi_query_device_reply(connection, query, nullptr));
    if (!devices) return keyboards;
    for (auto i = xcb_input_xi_query_device_infos_iterator(devices.get()); i.rem > 0;
         xcb_input_xi_device_info_next(&i)) {
        if (i.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && i.data->enabled != 0)
            keyboards.push_back(i.data->deviceid);
    }
    return keyboards;
}

void watchKeyboards(xcb_connection_t* connection, xcb_window_t root) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } const mask{{.deviceid = XCB_INPUT_DEVICE_ALL, .mask_len = 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
    xcb_input_xi_select_events(connection, root, 1, &mask.head);
    xcb_flush(connection);
}

int grabOnKeyboard(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                   const KeyCombination& combination, const LockModifiers& locks) {
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    constexpr std::uint8_t eventsToRoot = 0;
    const auto sets = modifierSets(combination, locks);
    const auto cookie = xcb_input_xi_passive_grab_device(
        connection, XCB_CURRENT_TIME, root, XCB_NONE, combination.key, keyboard,
        static_cast<std::uint16_t>(sets.size()), 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
        XCB_INPUT_GRAB_MODE_22_ASYNC, eventsToRoot, &events, sets.data());
    xcb_generic_error_t* failure = nullptr;
    const auto reply = owned(xcb_input_xi_passive_grab_device_reply(connection, cookie, &failure));
    if (const ErrorHandle error(failure); error) return error->error_code;
    if (!reply) return XCB_VALUE;
    // The answer lists the sets that were refused.
    const auto refused = xcb_input_xi_passive_grab_device_modifiers_iterator(reply.get());
    return refused.rem > 0 ? refused.data->status : 0;
}

void ungrabOnKeyboard(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                      const KeyCombination& combination, const LockModifiers& locks) {
    const auto sets = modifierSets(combination, locks);
    // The answer of a keyboard that is gone is an error that nobody waits for.
    const auto cookie = xcb_input_xi_passive_ungrab_device_checked(
        connection, root, combination.key, keyboard, static_cast<std::uint16_t>(sets.size()),
        XCB_INPUT_GRAB_TYPE_KEYCODE, sets.data());
    xcb_discard_reply(connection, cookie.sequence);
}

bool isDownOn(xcb_connection_t* connection, KeyboardId keyboard, xcb_keycode_t key) {
    const auto query = xcb_input_query_device_state(connection, static_cast<std::uint8_t>(keyboard));
    const auto state = owned(xcb_input_query_device_state_reply(connection, query, nullptr));
    if (!state) return false;
    for (auto i = xcb_input_query_device_state_classes_iterator(state.get()); i.rem > 0;
         xcb_input_input_state_next(&i)) {
        if (i.data->class_id != XCB_INPUT_INPUT_CLASS_KEY) continue;
        const auto& keys = reinterpret_cast<const xcb_input_key_state_t&>(*i.data);
        return (std::span(keys.keys)[key / 8U] >> (key % 8U) & 1U) != 0;
    }
    return false;
}

}  // namespace parlivo::x11
