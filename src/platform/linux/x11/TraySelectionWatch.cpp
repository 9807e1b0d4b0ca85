// SPDX-License-Identifier: MIT
#include "platform/linux/x11/TraySelectionWatch.h"

#include "platform/linux/x11/XcbQueries.h"

#include <xcb/xfixes.h>

#include <string>
#include <utility>

namespace parlivo {

namespace {

/// From the relative luminance (ITU-R BT.709) of a colour with 16-bit channels.
StatusItemPlace::Foreground foregroundOf(const std::uint32_t* channels) {
    const double luminance = 0.2126 * channels[0] + 0.7152 * channels[1] + 0.0722 * channels[2];
    return luminance > 0x7fff ? StatusItemPlace::Foreground::Light : StatusItemPlace::Foreground::Dark;
}

}  // namespace

TraySelectionWatch::TraySelectionWatch(std::function<void()> changed) : changed_(std::move(changed)) {
    if (!connect()) return;
    notifier_ =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { readEvents(); });
    const auto owner = x11::owned(xcb_get_selection_owner_reply(
        connection_.get(), xcb_get_selection_owner(connection_.get(), selection_), nullptr));
    if (owner) setTray(owner->owner);
    readEvents();
}

bool TraySelectionWatch::connect() {
    int screenNumber = 0;
    connection_.reset(xcb_connect(nullptr, &screenNumber));
    xcb_connection_t* const server = connection_.get();
    if (xcb_connection_has_error(server) != 0) return false;
    const auto* xfixes = xcb_get_extension_data(server, &xcb_xfixes_id);
    const auto version =
        x11::owned(xcb_xfixes_query_version_reply(server, xcb_xfixes_query_version(server, 2, 0), nullptr));
    if (!xfixes || !version) return false;
    selectionNotify_ = static_cast<std::uint8_t>(xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    selection_ = x11::internAtom(server, "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber));
    colours_ = x11::internAtom(server, "_NET_SYSTEM_TRAY_COLORS");
    xcb_xfixes_select_selection_input(server, x11::screenOf(server, screenNumber)->root, selection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    return true;
}

void TraySelectionWatch::readEvents() {
    while (const auto event = x11::owned(xcb_poll_for_event(connection_.get()))) handle(*event);
    if (xcb_connection_has_error(connection_.get()) != 0) notifier_->setEnabled(false);
}

void TraySelectionWatch::handle(const xcb_generic_event_t& event) {
    const auto type = event.response_type & 0x7f;
    if (type == selectionNotify_) {
        setTray(reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event).owner);
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window != tray_ || change.atom != colours_) return;
        readForeground();
        changed_();
    }
}

void TraySelectionWatch::setTray(xcb_window_t tray) {
    if (tray_ != XCB_NONE) {
        tray_ = XCB_NONE;
        changed_();
    }
    if (tray == XCB_NONE) return;
    tray_ = tray;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), tray_, XCB_CW_EVENT_MASK, &events);
    readForeground();
    changed_();
}

/// A tray that says nothing of its colours leaves the choice to us.
void TraySelectionWatch::readForeground() {
    constexpr std::uint32_t channels = 3;
    const auto cookie =
        xcb_get_property(connection_.get(), 0, tray_, colours_, XCB_ATOM_CARDINAL, 0, channels);
    const auto reply = x11::owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    const bool complete = reply && reply->format == 32 && reply->value_len == channels;
    foreground_ = complete
                      ? foregroundOf(static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())))
                      : StatusItemPlace::Foreground::Unknown;
}

}  // namespace parlivo
