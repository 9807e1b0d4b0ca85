// SPDX-License-Identifier: MIT
#include "platform/linux/x11/GrabProbe.h"

#include "platform/linux/x11/XcbHandles.h"

#include <cstdint>
#include <vector>

namespace parlivo::x11 {

namespace {

constexpr std::uint8_t eventsToRoot = 0;

/// The requests for one combination, whose answers are on the way.
struct Probe {
    xcb_void_cookie_t onMaster;
    xcb_input_xi_passive_grab_device_cookie_t onKeyboard;
};

Probe ask(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
          const KeyCombination& combination) {
    const std::uint32_t modifiers = combination.modifiers;
    constexpr std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const auto onMaster = xcb_grab_key_checked(connection, eventsToRoot, root, combination.modifiers,
                                               combination.key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    xcb_ungrab_key(connection, combination.key, root, combination.modifiers);
    const auto onKeyboard = xcb_input_xi_passive_grab_device(
        connection, XCB_CURRENT_TIME, root, XCB_NONE, combination.key, keyboard, 1, 1,
        XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, eventsToRoot,
        &events, &modifiers);
    // The answer for a keyboard that is gone is an error that nobody waits for.
    const auto back = xcb_input_xi_passive_ungrab_device_checked(connection, root, combination.key, keyboard,
                                                                 1, XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    xcb_discard_reply(connection, back.sequence);
    return {.onMaster = onMaster, .onKeyboard = onKeyboard};
}

bool wasGranted(xcb_connection_t* connection, const Probe& probe) {
    const ErrorHandle refusal(xcb_request_check(connection, probe.onMaster));
    xcb_generic_error_t* failure = nullptr;
    const auto reply = owned(xcb_input_xi_passive_grab_device_reply(connection, probe.onKeyboard, &failure));
    const ErrorHandle error(failure);
    // The answer lists the modifiers that were refused.
    const bool onKeyboard =
        reply && xcb_input_xi_passive_grab_device_modifiers_iterator(reply.get()).rem == 0;
    return !refusal || onKeyboard;
}

}  // namespace

bool anyMayBeGrabbed(xcb_connection_t* connection, xcb_window_t root, KeyboardId keyboard,
                     std::span<const KeyCombination> combinations) {
    std::vector<Probe> probes;
    for (const KeyCombination& combination : combinations)
        probes.push_back(ask(connection, root, keyboard, combination));
    bool any = false;
    // Each answer is taken, also after the first that would do.
    for (const Probe& probe : probes) any = wasGranted(connection, probe) || any;
    return any;
}

}  // namespace parlivo::x11
