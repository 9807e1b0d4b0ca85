// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Screens.h"

#include "platform/linux/x11/VisibleFrame.h"
#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbQueries.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace parlivo {

namespace {

/// The number of the X screen that the toolkit shows its windows on. An X server may have several, which
/// share no windows; DISPLAY names one.
int defaultScreen() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) == 0) return 0;
    std::free(host);
    return screen;
}

/// The toolkit's X connection with the names that the window managers' hints go by.
class Display {
  public:
    /// nullopt if the toolkit does not run on X.
    static std::optional<Display> current() {
        const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        if (!x11 || xcb_connection_has_error(x11->connection()) != 0) return {};
        return Display(x11->connection());
    }

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    int screenNumber() const { return screenNumber_; }
    QSize size() const { return {screen_->width_in_pixels, screen_->height_in_pixels}; }

    xcb_atom_t atom(const std::string& name) const { return x11::internAtom(connection_, name); }

    xcb_get_property_cookie_t askProperty(xcb_window_t window, xcb_atom_t property, xcb_atom_t type) const {
        constexpr std::uint32_t longEnough = 4096;
        return xcb_get_property(connection_, 0, window, property, type, 0, longEnough);
    }

    std::vector<std::uint32_t> answer(xcb_get_property_cookie_t cookie) const {
        const auto reply = x11::owned(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply || reply->format != 32) return {};
        const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
        return {values, values + reply->value_len};
    }

    std::vector<std::uint32_t> rootProperty(const std::string& name, xcb_atom_t type) const {
        return answer(askProperty(root(), atom(name), type));
    }

  private:
    explicit Display(xcb_connection_t* connection)
        : connection_(connection),
          screenNumber_(defaultScreen()),
          screen_(x11::screenOf(connection, screenNumber_)) {}

    xcb_connection_t* connection_;
    int screenNumber_;
    const xcb_screen_t* screen_;
};

QRect nativeGeometry(const QScreen& screen) {
    // The toolkit scales a screen about its upper left corner.
    const double scale = screen.devicePixelRatio();
    const QSizeF size = QSizeF(screen.geometry().size()) * scale;
    return {screen.geometry().topLeft(), QSize(qRound(size.width()), qRound(size.height()))};
}

QRect fromNative(const QRect& rect, const QScreen& screen) {
    const double scale = screen.devicePixelRatio();
    const QPoint corner = screen.geometry().topLeft();
    const auto scaled = [&](int value) { return static_cast<int>(std::lround(value / scale)); };
    const QPoint offset = rect.topLeft() - corner;
    return {corner + QPoint(scaled(offset.x()), scaled(offset.y())),
            QSize(scaled(rect.width()), scaled(rect.height()))};
}

/// The middle of the window that the user works in.
std::optional<QPoint> activeWindowCentre(const Display& display) {
    const auto active = display.rootProperty("_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    if (active.empty() || active.front() == XCB_NONE) return {};
    xcb_connection_t* const server = display.connection();
    const auto size = xcb_get_geometry(server, active.front());
    const auto place = xcb_translate_coordinates(server, active.front(), display.root(), 0, 0);
    const auto geometry = x11::owned(xcb_get_geometry_reply(server, size, nullptr));
    const auto origin = x11::owned(xcb_translate_coordinates_reply(server, place, nullptr));
    if (!geometry || !origin) return {};
    return QPoint(origin->dst_x + geometry->width / 2, origin->dst_y + geometry->height / 2);
}

/// The screen of the active window; the primary one when that window is on none.
QScreen* mainScreen(const Display& display) {
    if (const auto centre = activeWindowCentre(display)) {
        for (QScreen* screen : QGuiApplication::screens())
            if (nativeGeometry(*screen).contains(*centre)) return screen;
    }
    return QGuiApplication::primaryScreen();
}

std::optional<Strut> strutOf(const std::vector<std::uint32_t>& v) {
    if (v.size() < Strut::fieldCount) return {};
    return Strut{v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11]};
}

std::vector<Strut> struts(const Display& display) {
    const xcb_atom_t property = display.atom("_NET_WM_STRUT_PARTIAL");
    std::vector<xcb_get_property_cookie_t> questions;
    for (const xcb_window_t window : display.rootProperty("_NET_CLIENT_LIST", XCB_ATOM_WINDOW))
        questions.push_back(display.askProperty(window, property, XCB_ATOM_CARDINAL));
    std::vector<Strut> result;
    for (const auto& question : questions)
        if (const auto strut = strutOf(display.answer(question))) result.push_back(*strut);
    return result;
}

/// What mutter says of each monitor: its own panels are no windows that could be asked.
/// GTK reads the same property (gdk/x11/gdkmonitor-x11.c).
std::optional<QRect> gtkWorkArea(const Display& display, const QRect& monitor) {
    const auto desktop = display.rootProperty("_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL);
    if (desktop.empty()) return {};
    const auto areas =
        display.rootProperty("_GTK_WORKAREAS_D" + std::to_string(desktop.front()), XCB_ATOM_CARDINAL);
    constexpr std::size_t fields = 4;
    for (std::size_t index = 0; index + fields <= areas.size(); index += fields) {
        const auto field = [&](std::size_t offset) { return static_cast<int>(areas[index + offset]); };
        const QRect area(field(0), field(1), field(2), field(3));
        if (monitor.contains(area)) return area;
    }
    return {};
}

}  // namespace

std::optional<QRect> X11Screens::mainVisibleFrame() {
    const auto display = Display::current();
    const QScreen* screen = display ? mainScreen(*display) : QGuiApplication::primaryScreen();
    if (!screen) return {};
    // The toolkit knows the work area of a single screen only.
    if (!display || QGuiApplication::screens().size() == 1) return screen->availableGeometry();
    const QRect monitor = nativeGeometry(*screen);
    const auto area = gtkWorkArea(*display, monitor);
    return fromNative(area ? *area : visibleFrame(monitor, display->size(), struts(*display)), *screen);
}

bool X11Screens::transparencyAvailable() {
    const auto display = Display::current();
    if (!display) return true;
    const xcb_atom_t compositor = display->atom("_NET_WM_CM_S" + std::to_string(display->screenNumber()));
    const auto owner = x11::owned(xcb_get_selection_owner_reply(
        display->connection(), xcb_get_selection_owner(display->connection(), compositor), nullptr));
    return owner && owner->owner != XCB_NONE;
}

}  // namespace parlivo
