// SPDX-License-Identifier: MIT
#include "platform/linux/x11/GrabbedKey.h"

namespace parlivo::x11 {

namespace {

/// The modifiers among an event's state, which also tells mouse buttons and the layout's group.
constexpr std::uint32_t allModifiers = 0xff;

GrabbedKey coreKey(GrabbedKey::Edge edge, const xcb_generic_event_t& event) {
    // Press and release have the same form.
    const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
    return {.edge = edge, .key = key.detail, .state = static_cast<std::uint16_t>(key.state & allModifiers)};
}

GrabbedKey keyboardsKey(GrabbedKey::Edge edge, const xcb_generic_event_t& event) {
    const auto& key = reinterpret_cast<const xcb_input_key_press_event_t&>(event);
    return {.edge = edge,
            .key = static_cast<xcb_keycode_t>(key.detail),
            .state = static_cast<std::uint16_t>(key.mods.effective & allModifiers),
            .keyboard = key.deviceid};
}

/// The type of an event of the input extension; nullopt for one of another origin.
std::optional<std::uint16_t> inputEventType(xcb_connection_t* connection, const xcb_generic_event_t& event) {
    if (event.response_type != XCB_GE_GENERIC) return std::nullopt;
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    const auto* const extension = xcb_get_extension_data(connection, &xcb_input_id);
    if (extension == nullptr || generic.extension != extension->major_opcode) return std::nullopt;
    return generic.event_type;
}

}  // namespace

std::optional<GrabbedKey> grabbedKeyOf(xcb_connection_t* connection, const xcb_generic_event_t& event) {
    using Edge = GrabbedKey::Edge;
    // Events that another client merely sent carry a further bit and match nothing here.
    if (event.response_type == XCB_KEY_PRESS) return coreKey(Edge::Press, event);
    if (event.response_type == XCB_KEY_RELEASE) return coreKey(Edge::Release, event);
    const auto type = inputEventType(connection, event);
    if (type == XCB_INPUT_KEY_PRESS) return keyboardsKey(Edge::Press, event);
    if (type == XCB_INPUT_KEY_RELEASE) return keyboardsKey(Edge::Release, event);
    return std::nullopt;
}

bool isKeyboardChange(xcb_connection_t* connection, const xcb_generic_event_t& event) {
    return inputEventType(connection, event) == XCB_INPUT_HIERARCHY;
}

}  // namespace parlivo::x11
