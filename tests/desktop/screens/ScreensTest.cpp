// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Screens.h"
#include "support/XServer.h"

#include <QString>

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

/// Owns a selection as a compositing manager does, on a connection of its own.
class Compositor {
  public:
    explicit Compositor(const char* selection) {
        xcb_connection_t* const server = connection_.get();
        const xcb_window_t window = x11::makeInvisibleWindow(server, rootOf(server));
        xcb_set_selection_owner(server, window, x11::internAtom(server, selection), XCB_CURRENT_TIME);
        waitForServer(server);
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
