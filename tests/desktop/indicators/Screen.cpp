// SPDX-License-Identifier: MIT
#include "desktop/indicators/Screen.h"

#include "support/Error.h"
#include "support/XServer.h"

#include <xcb/xtest.h>

#include <deque>

namespace parlivo::desktop {

using x11::owned;

Screen::Screen() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_.get()) != 0)
        throw Error(QStringLiteral("Test"), 1, QStringLiteral("no display"));
}

xcb_window_t Screen::root() const {
    return rootOf(connection_.get());
}

QSize Screen::size() const {
    return geometry(root()).size();
}

void Screen::sync() const {
    waitForServer(connection_.get());
}

xcb_atom_t Screen::atom(const char* name) const {
    return x11::internAtom(connection_.get(), name);
}

QImage Screen::picture(const QRect& area) const {
    const auto coordinate = [](int value) { return static_cast<std::int16_t>(value); };
    const auto extent = [](int value) { return static_cast<std::uint16_t>(value); };
    const auto cookie =
        xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), coordinate(area.x()),
                      coordinate(area.y()), extent(area.width()), extent(area.height()), ~0U);
    const auto reply = owned(xcb_get_image_reply(connection_.get(), cookie, nullptr));
    if (!reply)
        throw Error(QStringLiteral("Test"), 2, QStringLiteral("no picture of that part of the screen"));
    const uchar* data = xcb_get_image_data(reply.get());
    return QImage(data, area.width(), area.height(), QImage::Format_RGB32).copy();
}

xcb_window_t Screen::focus() const {
    const auto reply =
        owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
    return reply ? reply->focus : XCB_NONE;
}

bool Screen::isViewable(xcb_window_t window) const {
    const auto cookie = xcb_get_window_attributes(connection_.get(), window);
    const auto reply = owned(xcb_get_window_attributes_reply(connection_.get(), cookie, nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE &&
           reply->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

QRect Screen::geometry(xcb_window_t window) const {
    const auto sizeCookie = xcb_get_geometry(connection_.get(), window);
    const auto placeCookie = xcb_translate_coordinates(connection_.get(), window, root(), 0, 0);
    const auto size = owned(xcb_get_geometry_reply(connection_.get(), sizeCookie, nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(connection_.get(), placeCookie, nullptr));
    if (!size || !place) return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

std::optional<QRect> Screen::findWindow(QSize size) const {
    std::deque<xcb_window_t> open{root()};
    while (!open.empty()) {
        const xcb_window_t window = open.front();
        open.pop_front();
        const QRect area = geometry(window);
        if (area.size() == size && isViewable(window)) return area;
        const auto tree = owned(
            xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), window), nullptr));
        if (!tree) continue;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        open.insert(open.end(), children, children + xcb_query_tree_children_length(tree.get()));
    }
    return {};
}

void Screen::movePointer(const QPoint& point) {
    xcb_test_fake_input(connection_.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root(),
                        static_cast<std::int16_t>(point.x()), static_cast<std::int16_t>(point.y()), 0);
    sync();
}

void Screen::click(const QPoint& point, std::uint8_t button) {
    movePointer(point);
    for (const int type : {XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE})
        xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(type), button, XCB_CURRENT_TIME,
                            root(), 0, 0, 0);
    sync();
}

void Screen::setProperty(xcb_window_t window, const char* name, const std::vector<std::uint32_t>& values) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, atom(name), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
    sync();
}

xcb_window_t Screen::selectionOwner(const char* selection) const {
    const auto cookie = xcb_get_selection_owner(connection_.get(), atom(selection));
    const auto reply = owned(xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
    return reply ? reply->owner : XCB_NONE;
}

void Screen::addDock(const QRect& area, const std::array<std::uint32_t, 12>& strut) {
    const xcb_window_t dock = xcb_generate_id(connection_.get());
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, dock, root(),
                      static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
                      static_cast<std::uint16_t>(area.width()), static_cast<std::uint16_t>(area.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t type = atom("_NET_WM_WINDOW_TYPE_DOCK");
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, dock, atom("_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &type);
    setProperty(dock, "_NET_WM_STRUT_PARTIAL", {strut.begin(), strut.end()});
    xcb_map_window(connection_.get(), dock);
    sync();
}

}  // namespace parlivo::desktop
