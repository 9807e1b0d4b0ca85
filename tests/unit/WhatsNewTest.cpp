// SPDX-License-Identifier: MIT
#include "support/WindowTest.h"
#include "update/WhatsNew.h"

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

class WhatsNewTest : public WindowTest {
  protected:
    WhatsNewTest() { platform.bundle().version = u"1.4.0"_s; }

    QVariant changelog() const { return stored(Settings::pendingChangelog); }
    QVariant lastSeen() const { return stored(Settings::lastSeenVersion); }
};

TEST_F(WhatsNewTest, IsShownOnceAfterAnUpdate) {
    store(Settings::pendingChangelog, u"Più veloce.\nPiù <b>bello</b>."_s);
    store(Settings::lastSeenVersion, u"1.3.0"_s);
    WhatsNew::showIfPending();
    ASSERT_EQ(dialogs->alerts.size(), 1U);
    EXPECT_EQ(dialogs->alerts[0].message, u"Parlivo 1.4.0 — Cosa c'è di nuovo"_s);
    EXPECT_EQ(dialogs->alerts[0].informativeText, u"Più veloce.\nPiù <b>bello</b>."_s);
    EXPECT_EQ(dialogs->alerts[0].buttons, QStringList(u"Ottimo"_s));
    EXPECT_FALSE(changelog().isValid());
    EXPECT_EQ(lastSeen(), u"1.4.0"_s);

    WhatsNew::showIfPending();
    EXPECT_EQ(dialogs->alerts.size(), 1U);
}

TEST_F(WhatsNewTest, ADowngradeIsAChangeToo) {
    store(Settings::pendingChangelog, u"Tornati indietro."_s);
    store(Settings::lastSeenVersion, u"1.5.0"_s);
    WhatsNew::showIfPending();
    EXPECT_EQ(dialogs->alerts.size(), 1U);
}

TEST_F(WhatsNewTest, AFirstInstallationShowsNothingNowOrLater) {
    for (const QVariant& before : {QVariant(), QVariant(u""_s), QVariant(7)}) {
        store(Settings::pendingChangelog, u"Più veloce."_s);
        store(Settings::lastSeenVersion, before);
        if (!before.isValid()) Config::remove(Settings::lastSeenVersion);
        for (int start = 0; start < 2; ++start) {
            WhatsNew::showIfPending();
            EXPECT_TRUE(dialogs->alerts.empty());
            EXPECT_EQ(changelog(), u"Più veloce."_s);
            EXPECT_EQ(lastSeen(), u"1.4.0"_s);
        }
    }
}

TEST_F(WhatsNewTest, TheSameVersionShowsNothing) {
    store(Settings::pendingChangelog, u"Più veloce."_s);
    store(Settings::lastSeenVersion, u"1.4.0"_s);
    WhatsNew::showIfPending();
    EXPECT_TRUE(dialogs->alerts.empty());
    EXPECT_EQ(changelog(), u"Più veloce."_s);
}

TEST_F(WhatsNewTest, WithoutAChangelogOnlyTheVersionIsKept) {
    store(Settings::lastSeenVersion, u"1.3.0"_s);
    WhatsNew::showIfPending();
    EXPECT_TRUE(dialogs->alerts.empty());
    EXPECT_EQ(lastSeen(), u"1.4.0"_s);
}

}  // namespace
}  // namespace parlivo
