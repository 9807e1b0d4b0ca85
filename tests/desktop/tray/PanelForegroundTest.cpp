// SPDX-License-Identifier: MIT
#include "desktop/tray/DesktopPortal.h"
#include "platform/linux/desktop/PanelForeground.h"
#include "support/Waiting.h"

#include <QDBusContext>

#include <gtest/gtest.h>

#include <optional>

namespace parlivo::desktop {
namespace {

using Foreground = StatusItemPlace::Foreground;

/// Xfce's settings service as far as it tells of a dark panel, on the session bus as long as this lives.
class Xfconf : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")
  public:
    Xfconf() {
        bus_.registerObject(path(), this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        bus_.registerService(name());
    }
    ~Xfconf() override {
        bus_.unregisterService(name());
        bus_.unregisterObject(path());
        QDBusConnection::disconnectFromBus(bus_.name());
    }
    Xfconf(const Xfconf&) = delete;
    Xfconf& operator=(const Xfconf&) = delete;

    /// The user's choice; without one the setting is not there.
    void setDarkMode(bool dark) {
        dark_ = dark;
        Q_EMIT PropertyChanged(QStringLiteral("xfce4-panel"), QStringLiteral("/panels/dark-mode"),
                               QDBusVariant(dark));
    }

  public Q_SLOTS:
    QDBusVariant GetProperty(const QString& channel, const QString& property) const {
        if (dark_ && channel == QStringLiteral("xfce4-panel") &&
            property == QStringLiteral("/panels/dark-mode")) {
            return QDBusVariant(*dark_);
        }
        sendErrorReply(QStringLiteral("org.xfce.Xfconf.Error.PropertyNotFound"), property);
        return QDBusVariant(false);
    }

  Q_SIGNALS:
    void PropertyChanged(const QString& channel, const QString& property, const QDBusVariant& value);

  private:
    static QString name() { return QStringLiteral("org.xfce.Xfconf"); }
    static QString path() { return QStringLiteral("/org/xfce/Xfconf"); }

    QDBusConnection bus_ =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("xfconf"));
    std::optional<bool> dark_;
};

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

#include "PanelForegroundTest.moc"
