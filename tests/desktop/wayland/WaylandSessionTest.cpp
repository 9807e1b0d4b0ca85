// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/tray/NotifierWatcher.h"
#include "desktop/wayland/Sway.h"

namespace parlivo::desktop {
namespace {

using namespace std::chrono_literals;

const QString onClipboard =
    QStringLiteral("⚠️ Testo copiato negli appunti — manca il permesso Accessibilità (menu)");
const QString ownWindows = QStringLiteral("it.parlivo.Parlivo");

/// The whole program in a session of sway, without an X server.
class WaylandSessionTest : public testing::Test {
  protected:
    WaylandSessionTest() {
        home::settle({{QStringLiteral("cleanupLevel"), QStringLiteral("none")}});
        home::provideModels();
    }

    static QProcessEnvironment session() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        return environment;
    }

    static void dictate(const Program& program) {
        ASSERT_TRUE(program.invoke("Press"));
        ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
        letPass(400ms);
        EXPECT_EQ(sway::focusedApplication(), sway::Terminal::application());
        EXPECT_FALSE(sway::applications().contains(ownWindows)) << "no overlay that is a window";
        ASSERT_TRUE(program.invoke("Release"));
        ASSERT_TRUE(program.waitForState(QStringLiteral("idle")));
    }
};

TEST_F(WaylandSessionTest, TheTextGoesToTheClipboardAndThatIsSaid) {
    const QString text = QStringLiteral("Perché no? «Sì» — 12 € 👍🏽");
    StubRecogniser stub(text);
    const sway::Terminal terminal;
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    dictate(program);
    EXPECT_TRUE(waitFor([&] { return program.statusText() == onClipboard; }))
        << qPrintable(program.statusText());
    EXPECT_TRUE(waitFor([&] { return sway::clipboard() == text.toUtf8(); })) << sway::clipboard().constData();
    EXPECT_EQ(sway::clipboard({QStringLiteral("--primary")}), text.toUtf8());
    EXPECT_EQ(sway::focusedApplication(), sway::Terminal::application());
    EXPECT_EQ(terminal.received(), QByteArray());
    const QString log = home::log();
    EXPECT_TRUE(log.contains(QStringLiteral("iniezione SALTATA: permesso accessibilità mancante")));
    EXPECT_FALSE(log.contains(QStringLiteral("iniezione completata")));
    EXPECT_TRUE(log.contains(QStringLiteral("permesso accessibilità: NEGATO")));
    EXPECT_TRUE(log.contains(QStringLiteral("sessione: Wayland: ")));
    EXPECT_FALSE(log.contains(text)) << "what was dictated";
}

TEST_F(WaylandSessionTest, TheMenuSaysThatThePermissionIsMissing) {
    const NotifierWatcher panel;
    const Program program(builtBundle(), session());
    ASSERT_TRUE(waitFor([&] { return !panel.items().isEmpty(); }));
    const NotifierItem item(panel.bus(), panel.items().value(0));
    const auto saysSo = [&] {
        for (const MenuLine& line : item.menu())
            if (line.label == QStringLiteral("Accessibilità: ⛔️ manca — clicca")) return true;
        return false;
    };
    EXPECT_TRUE(waitFor(saysSo));
}

TEST_F(WaylandSessionTest, TheWindowsWork) {
    const Program program(builtBundle(), session());
    ASSERT_TRUE(program.waitUntilUp());
    EXPECT_FALSE(sway::applications().contains(ownWindows));
    ASSERT_TRUE(program.invoke("ShowSettings"));
    EXPECT_TRUE(waitFor([] { return sway::applications().contains(ownWindows); }));
    EXPECT_TRUE(waitFor([] { return sway::focusedApplication() == ownWindows; }));
}

TEST_F(WaylandSessionTest, TheVariableOverridesTheChoice) {
    auto environment = session();
    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("x11"));
    Program x11(builtBundle(), environment);
    EXPECT_EQ(x11.waitForExit(), 1);
    EXPECT_TRUE(x11.errors().contains(QStringLiteral("serve una sessione grafica X11 (variabile DISPLAY)")));

    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("none"));
    Program none(builtBundle(), environment);
    EXPECT_EQ(none.waitForExit(), 1);
    EXPECT_TRUE(none.errors().contains(QStringLiteral("PARLIVO_PLATFORM=none")));

    environment.insert(QStringLiteral("PARLIVO_PLATFORM"), QStringLiteral("mir"));
    Program unknown(builtBundle(), environment);
    EXPECT_EQ(unknown.waitForExit(), 1);
    EXPECT_TRUE(unknown.errors().contains(QStringLiteral("PARLIVO_PLATFORM=mir: valore sconosciuto")));
}

}  // namespace
}  // namespace parlivo::desktop
