// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"
#include "desktop/tray/NotifierWatcher.h"
#include "desktop/wayland/WaylandEnvironment.h"
#include "desktop/wayland/WaylandReceiver.h"
#include "platform/linux/kde/KeyGrant.h"
#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace parlivo::desktop {
namespace {

/// Whether KWin lets this program press keys, as one that starts now would find it.
bool mayPressKeys() {
    const auto connection = wayland::WaylandConnection::open();
    return connection && wayland::FakeInput::isOffered(*connection);
}

QString applications() {
    return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications");
}

TEST(KwinGrantTest, TheDesktopFileIsWhatKwinAsksFor) {
    EXPECT_FALSE(mayPressKeys());
    const kde::KeyGrant grant(QCoreApplication::applicationFilePath(), applications());
    grant.write();
    EXPECT_TRUE(grant.isWritten());
    EXPECT_TRUE(waitFor(mayPressKeys));
}

/// The menu looks at it whenever it is opened.
bool saysThatTypingWorks(const NotifierItem& item) {
    item.openMenu();
    for (const MenuLine& line : item.menu())
        if (line.label == QStringLiteral("Accessibilità: ✅")) return true;
    return false;
}

TEST(KwinGrantTest, TheRunningProgramNeedsNoRestart) {
    const QString spoken = QStringLiteral("Perché no? «Sì» — 12 €");
    separateSpeakerFromMicrophone();
    home::settle();
    StubRecogniser stub(spoken);
    const NotifierWatcher panel;
    const Program program(builtBundle(), waylandEnvironment());
    ASSERT_TRUE(program.waitUntilUp());
    ASSERT_TRUE(waitFor([&] { return !panel.items().isEmpty(); }));
    const NotifierItem item(panel.bus(), panel.items().value(0));
    EXPECT_FALSE(saysThatTypingWorks(item));
    const QFileInfo file(builtBundle() + QStringLiteral("/Contents/MacOS/Parlivo"));
    kde::KeyGrant(file.canonicalFilePath(), applications()).write();
    ASSERT_TRUE(waitFor([&] { return saysThatTypingWorks(item); }));
    const WaylandReceiver receiver(WaylandReceiver::Kind::Gtk3);
    ASSERT_TRUE(program.invoke("Toggle"));
    ASSERT_TRUE(program.waitForState(QStringLiteral("recording")));
    letPass(std::chrono::milliseconds(400));
    ASSERT_TRUE(program.invoke("Toggle"));
    EXPECT_TRUE(receiver.waitForText(spoken)) << qPrintable(receiver.text()) << qPrintable(home::log());
}

}  // namespace
}  // namespace parlivo::desktop
