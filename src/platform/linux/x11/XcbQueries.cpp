// SPDX-License-Identifier: MIT
#include "platform/linux/x11/XcbQueries.h"

#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbXkb.h"

namespace parlivo::x11 {

xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 1 && number > 0; --number) xcb_screen_next(&screens);
    return screens.data;
}

xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
    constexpr std::uint8_t make = 0;
    const auto cookie =
        xcb_intern_atom(connection, make, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_window_t makeInvisibleWindow(xcb_connection_t* connection, xcb_window_t root, xcb_event_mask_t events) {
    const xcb_window_t window = xcb_generate_id(connection);
    const std::uint32_t mask = events;
    xcb_create_window(connection, 0, window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    return window;
}

std::optional<std::uint8_t> startKeyboardExtension(xcb_connection_t* connection) {
    const auto* const extension = xcb_get_extension_data(connection, &xcb_xkb_id);
    if (extension == nullptr || extension->present == 0) return std::nullopt;
    const auto cookie = xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION);
    const auto reply = owned(xcb_xkb_use_extension_reply(connection, cookie, nullptr));
    if (!reply || reply->supported == 0) return std::nullopt;
    return extension->first_event;
}

}  // namespace parlivo::x11
