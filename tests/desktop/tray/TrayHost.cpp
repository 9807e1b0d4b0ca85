// SPDX-License-Identifier: MIT
#include "desktop/tray/TrayHost.h"

#include "support/XServer.h"

#include <array>
#include <vector>

namespace parlivo::desktop {

using x11::owned;

namespace {

std::int16_t coordinate(int value) {
    return static_cast<std::int16_t>(value);
}

std::uint16_t extent(int value) {
    return static_cast<std::uint16_t>(value);
}

QColor groundOf(TrayHost::Panel panel) {
    const bool dark = panel == TrayHost::Panel::Dark || panel == TrayHost::Panel::SilentDark;
    return dark ? QColor(0x2e, 0x2e, 0x2e) : QColor(0xf0, 0xf0, 0xf0);
}

}  // namespace

TrayHost::TrayHost(Panel panel, const QRect& place, int iconLength)
    : connection_(xcb_connect(nullptr, nullptr)),
      notifier_(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read),
      ground_(groundOf(panel)),
      place_(place),
      iconLength_(iconLength) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { readEvents(); });
    paintPanel();
    if (panel == Panel::Light || panel == Panel::Dark) announceColours(panel);
    ownTraySelection();
    xcb_flush(connection_.get());
}

xcb_window_t TrayHost::root() const {
    return rootOf(connection_.get());
}

xcb_atom_t TrayHost::atom(const std::string& name) const {
    return x11::internAtom(connection_.get(), name);
}

void TrayHost::paintPanel() {
    panel_ = xcb_generate_id(connection_.get());
    const std::array<std::uint32_t, 3> values{ground_.rgb(), 1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, panel_, root(), coordinate(place_.x()),
                      coordinate(place_.y()), extent(place_.width()), extent(place_.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(connection_.get(), panel_);
}

/// Red, green and blue with 16 bits each, of ordinary text and of errors, warnings and success.
void TrayHost::announceColours(Panel panel) {
    const std::vector<std::uint32_t> colours(12, panel == Panel::Dark ? 0xffff : 0);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, panel_, atom("_NET_SYSTEM_TRAY_COLORS"),
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(colours.size()), colours.data());
}

void TrayHost::ownTraySelection() {
    const xcb_atom_t selection = atom("_NET_SYSTEM_TRAY_S0");
    xcb_set_selection_owner(connection_.get(), panel_, selection, XCB_CURRENT_TIME);
    xcb_client_message_event_t news{};
    news.response_type = XCB_CLIENT_MESSAGE;
    news.format = 32;
    news.window = root();
    news.type = atom("MANAGER");
    news.data.data32[1] = selection;
    news.data.data32[2] = panel_;
    xcb_send_event(connection_.get(), 0, root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&news));
}

void TrayHost::readEvents() {
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        const auto type = event->response_type & 0x7f;
        if (type == XCB_CLIENT_MESSAGE) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            constexpr std::uint32_t requestDock = 0;
            if (message.type == atom("_NET_SYSTEM_TRAY_OPCODE") && message.data.data32[1] == requestDock)
                dock(message.data.data32[2]);
        } else if (type == XCB_DESTROY_NOTIFY) {
            if (reinterpret_cast<const xcb_destroy_notify_event_t&>(*event).window == icon_) icon_ = XCB_NONE;
        }
    }
}

void TrayHost::dock(xcb_window_t icon) {
    icon_ = icon;
    const QPoint corner = iconPlace().topLeft() - place_.topLeft();
    xcb_reparent_window(connection_.get(), icon, panel_, coordinate(corner.x()), coordinate(corner.y()));
    const std::array<std::uint32_t, 2> size{extent(iconLength_), extent(iconLength_)};
    xcb_configure_window(connection_.get(), icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size.data());
    xcb_map_window(connection_.get(), icon);
    xcb_client_message_event_t news{};
    news.response_type = XCB_CLIENT_MESSAGE;
    news.format = 32;
    news.window = icon;
    news.type = atom("_XEMBED");
    news.data.data32[3] = panel_;  // "embedded notify" is message 0
    xcb_send_event(connection_.get(), 0, icon, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&news));
    xcb_flush(connection_.get());
}

std::optional<QRect> TrayHost::icon() const {
    if (icon_ == XCB_NONE) return {};
    return iconPlace();
}

QRect TrayHost::iconPlace() const {
    const QPoint margin((place_.width() - iconLength_) / 2, (place_.height() - iconLength_) / 2);
    return {place_.topLeft() + margin, QSize(iconLength_, iconLength_)};
}

}  // namespace parlivo::desktop
