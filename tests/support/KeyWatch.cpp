// SPDX-License-Identifier: MIT
#include "support/KeyWatch.h"

#include "support/Error.h"
#include "support/XServer.h"

#include <poll.h>
#include <xcb/xinput.h>

namespace parlivo::desktop {

namespace {

using x11::owned;

bool isPressOf(const xcb_generic_event_t& event, xcb_keycode_t key) {
    if (event.response_type != XCB_GE_GENERIC) return false;
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    return raw.event_type == XCB_INPUT_RAW_KEY_PRESS && raw.detail == key;
}

}  // namespace

KeyWatch::KeyWatch() : connection_(xcb_connect(nullptr, nullptr)) {
    auto* const c = connection_.get();
    // From version 2.1 on, grabs of others hide nothing.
    if (xcb_connection_has_error(c) != 0 ||
        !owned(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr)))
        throw Error(QStringLiteral("desktop test"), 1, QStringLiteral("no display to watch"));
    const struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS;
    } selection;
    xcb_input_xi_select_events(c, rootOf(c), 1, &selection.head);
    waitForServer(c);
}

void KeyWatch::forget() {
    waitForServer(connection_.get());
    while (x11::EventHandle(xcb_poll_for_event(connection_.get()))) {
    }
}

bool KeyWatch::waitFor(xcb_keycode_t key, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    pollfd news{.fd = xcb_get_file_descriptor(connection_.get()), .events = POLLIN, .revents = 0};
    while (true) {
        const x11::EventHandle event(xcb_poll_for_event(connection_.get()));
        if (event && isPressOf(*event, key)) return true;
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        if (!event) ::poll(&news, 1, static_cast<int>(left.count()));
    }
}

}  // namespace parlivo::desktop
