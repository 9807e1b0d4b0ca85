// SPDX-License-Identifier: MIT
#include "dictation/KeyListener.h"

#include "support/XServer.h"

#include <poll.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace parlivo::bench {

using x11::owned;

KeyListener::KeyListener() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_.get()) != 0) throw std::runtime_error("no display");
    selectPresses();
    thread_ = std::jthread([this](const std::stop_token& end) { listen(end); });
}

/// Raw events of the second input extension come whatever grabs there are, since its version 2.1.
void KeyListener::selectPresses() {
    auto* const c = connection_.get();
    const auto version = xcb_input_xi_query_version(c, 2, 2);
    if (!owned(xcb_input_xi_query_version_reply(c, version, nullptr)))
        throw std::runtime_error("no input extension");
    struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS;
    } selection;
    const auto root = desktop::rootOf(c);
    const auto selected = xcb_input_xi_select_events_checked(c, root, 1, &selection.head);
    if (x11::ErrorHandle(xcb_request_check(c, selected)))
        throw std::runtime_error("the display does not tell of its keys");
}

void KeyListener::listen(const std::stop_token& end) {
    constexpr int pollInterval = 100;  // ms
    pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
    while (!end.stop_requested()) {
        poll(&socket, 1, pollInterval);
        takeEvents();
    }
}

void KeyListener::takeEvents() {
    while (const x11::EventHandle event{xcb_poll_for_event(connection_.get())}) {
        if ((event->response_type & 0x7f) != XCB_GE_GENERIC) continue;
        const std::lock_guard lock(mutex_);
        presses_.push_back(std::chrono::steady_clock::now());
    }
}

std::vector<KeyListener::TimePoint> KeyListener::pressesSince(TimePoint begin) const {
    const std::lock_guard lock(mutex_);
    std::vector<TimePoint> result;
    std::ranges::copy_if(presses_, std::back_inserter(result), [&](TimePoint at) { return at >= begin; });
    return result;
}

}  // namespace parlivo::bench
