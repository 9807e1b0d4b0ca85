// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/XcbHandles.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstring>

namespace parlivo::desktop {
namespace {

/// Owns a selection as a compositing manager does, on a connection of its own.
class Compositor {
  public:
    explicit Compositor(const char* selection) {
        xcb_connection_t* const server = connection_.get();
        const auto cookie =
            xcb_intern_atom(server, 0, static_cast<std::uint16_t>(std::strlen(selection)), selection);
        const auto atom = x11::owned(xcb_intern_atom_reply(server, cookie, nullptr));
        const xcb_window_t window = xcb_generate_id(server);
        const xcb_screen_t* root = xcb_setup_roots_iterator(xcb_get_setup(server)).data;
        xcb_create_window(server, XCB_COPY_FROM_PARENT, window, root->root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(server, window, atom->atom, XCB_CURRENT_TIME);
        // The answer means that the server has done all that was asked before.
        x11::owned(xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
    }

  private:
    const x11::ConnectionHandle connection_{xcb_connect(nullptr, nullptr)};
};

TEST(ScreensTest, OnlyTheCompositorOfTheirOwnScreenMakesWindowsTransparent) {
    ASSERT_TRUE(qEnvironmentVariable("DISPLAY").endsWith(QStringLiteral(".1")));
    X11Screens screens;
    EXPECT_FALSE(screens.transparencyAvailable());
    const Compositor other("_NET_WM_CM_S0");
    EXPECT_FALSE(screens.transparencyAvailable()) << "it manages the other screen";
    const Compositor own("_NET_WM_CM_S1");
    EXPECT_TRUE(screens.transparencyAvailable());
}

}  // namespace
}  // namespace parlivo::desktop
