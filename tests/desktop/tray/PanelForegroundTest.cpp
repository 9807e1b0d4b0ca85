// SPDX-License-Identifier: MIT
#include "desktop/tray/DesktopPortal.h"
#include "desktop/tray/Xfconf.h"
#include "platform/linux/desktop/PanelForeground.h"
#include "support/Waiting.h"

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

using Foreground = StatusItemPlace::Foreground;

class PanelForegroundTest : public testing::Test {
  protected:
    explicit PanelForegroundTest(const char* desktop = "") { qputenv("XDG_CURRENT_DESKTOP", desktop); }
    ~PanelForegroundTest() override { qunsetenv("XDG_CURRENT_DESKTOP"); }
    PanelForegroundTest(const PanelForegroundTest&) = delete;
    PanelForegroundTest& operator=(const PanelForegroundTest&) = delete;

    static bool becomes(const PanelForeground& panel, Foreground value) {
        return waitFor([&] { return panel.value() == value; });
    }
};

class GnomePanelTest : public PanelForegroundTest {
  protected:
    GnomePanelTest() : PanelForegroundTest("ubuntu:GNOME") {}
};

class XfcePanelTest : public PanelForegroundTest {
  protected:
    XfcePanelTest() : PanelForegroundTest("XFCE") {}
};

TEST_F(GnomePanelTest, HasLightTextWhateverTheApplicationsTheme) {
    const DesktopPortal portal(DesktopPortal::Scheme::Light);
    const PanelForeground panel([] { FAIL() << "nothing changes"; });
    EXPECT_EQ(panel.value(), Foreground::Light);
    letPass(std::chrono::milliseconds(200));
    EXPECT_EQ(panel.value(), Foreground::Light);
}

TEST_F(XfcePanelTest, IsDarkUnlessTheUserWantsItOtherwise) {
    Xfconf settings;
    int changes = 0;
    const PanelForeground panel([&] { ++changes; });
    EXPECT_TRUE(becomes(panel, Foreground::Light)) << "no setting";
    settings.setDarkMode(false);
    EXPECT_TRUE(becomes(panel, Foreground::Unknown));
    settings.setDarkMode(true);
    EXPECT_TRUE(becomes(panel, Foreground::Light));
    EXPECT_EQ(changes, 3);
}

TEST_F(XfcePanelTest, IsDarkWhereNobodyTells) {
    const PanelForeground panel([] {});
    EXPECT_TRUE(becomes(panel, Foreground::Light));
}

TEST_F(PanelForegroundTest, OtherDesktopsTellByTheirPortal) {
    DesktopPortal portal(DesktopPortal::Scheme::Light);
    const PanelForeground panel([] {});
    EXPECT_TRUE(becomes(panel, Foreground::Dark));
    portal.prefer(DesktopPortal::Scheme::Dark);
    EXPECT_TRUE(becomes(panel, Foreground::Light));
}

}  // namespace
}  // namespace parlivo::desktop
