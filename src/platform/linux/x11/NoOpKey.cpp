// SPDX-License-Identifier: MIT
#include "platform/linux/x11/NoOpKey.h"

#include "platform/linux/x11/XcbHandles.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <span>

namespace parlivo::x11 {

bool noOpKeyAvailable(xcb_connection_t* connection) {
    const auto* const extension = xcb_get_extension_data(connection, &xcb_test_id);
    if (extension == nullptr || extension->present == 0) return false;
    const auto query = xcb_get_keyboard_mapping(connection, noOpKey, 1);
    const auto reply = owned(xcb_get_keyboard_mapping_reply(connection, query, nullptr));
    if (!reply) return false;
    const std::span symbols(xcb_get_keyboard_mapping_keysyms(reply.get()), reply->keysyms_per_keycode);
    return std::ranges::all_of(symbols, [](xcb_keysym_t symbol) { return symbol == XCB_NO_SYMBOL; });
}

void tapNoOpKey(xcb_connection_t* connection) {
    for (const auto type : std::to_array<std::uint8_t>({XCB_KEY_PRESS, XCB_KEY_RELEASE})) {
        xcb_test_fake_input(connection, type, noOpKey, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    }
    xcb_flush(connection);
}

}  // namespace parlivo::x11
