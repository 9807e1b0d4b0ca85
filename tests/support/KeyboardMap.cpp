// SPDX-License-Identifier: MIT
#include "support/KeyboardMap.h"

#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbQueries.h"
#include "platform/linux/x11/XcbXkb.h"

#include <cstddef>

namespace parlivo::desktop {

QByteArray keyboardMap() {
    using x11::owned;
    const x11::ConnectionHandle connection(xcb_connect(nullptr, nullptr));
    auto* const c = connection.get();
    x11::startKeyboardExtension(c);
    constexpr std::uint16_t everything = 0xff;
    const auto cookie = xcb_xkb_get_map(c, XCB_XKB_ID_USE_CORE_KBD, everything, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                        0, 0, 0, 0, 0, 0);
    const auto reply = owned(xcb_xkb_get_map_reply(c, cookie, nullptr));
    if (!reply) return {};
    // The first eight bytes are about the reply itself; its length is counted in words after the first 32.
    constexpr std::size_t head = 8;
    const std::size_t length = 32 + std::size_t{reply->length} * 4;
    const auto* const bytes = reinterpret_cast<const char*>(reply.get());
    return {bytes + head, static_cast<qsizetype>(length - head)};
}

}  // namespace parlivo::desktop
