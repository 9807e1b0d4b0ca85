// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/base/MacBundle.h"
#include "platform/macos/base/MacDirectories.h"
#include "platform/macos/base/MacSystemVersion.h"
#include "platform/macos/base/MacUserDefaults.h"
#include "platform/macos/base/OsLog.h"
#include "platform/macos/desktop/MacScreens.h"
#include "platform/macos/desktop/PanelWindow.h"
#include "platform/macos/fakes/FakeObjects.h"
#include "platform/macos/sound/MacSounds.h"

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>

namespace parlivo {
namespace {

class BaseTest : public MacTest {
  protected:
    BaseTest() { mac::renewWorld(); }
};

TEST_F(BaseTest, FoldersAreTheUsersOwn) {
    const MacDirectories directories;
    EXPECT_EQ(directories.applicationSupport(), QStringLiteral("/Users/ada/Library/Application Support"));
    EXPECT_EQ(directories.logs(), QStringLiteral("/Users/ada/Library/Logs"));
    EXPECT_EQ(directories.home(), QStringLiteral("/Users/ada"));
    EXPECT_EQ(directories.temporary(), QStringLiteral("/var/folders/zz/T"));
}

TEST_F(BaseTest, ResourcesAreLookedUpByTheirWholeName) {
    const MacBundle bundle;
    mac::world().resources[QStringLiteral("whisper-server")] =
        QStringLiteral("/A/Contents/Resources/whisper-server");
    EXPECT_EQ(bundle.resource(QStringLiteral("whisper-server")),
              QStringLiteral("/A/Contents/Resources/whisper-server"));
    EXPECT_EQ(bundle.resource(QStringLiteral("ggml-model.bin")), std::nullopt);
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("resource whisper-server of type nil"),
                                             QStringLiteral("resource ggml-model.bin of type nil")}));
}

TEST_F(BaseTest, TheVersionCountsOnlyAsAString) {
    const MacBundle bundle;
    EXPECT_EQ(bundle.shortVersion(), std::nullopt);
    mac::world().information[QStringLiteral("CFBundleShortVersionString")] = 1.5;
    EXPECT_EQ(bundle.shortVersion(), std::nullopt);
    mac::world().information[QStringLiteral("CFBundleShortVersionString")] = QStringLiteral("1.5");
    EXPECT_EQ(bundle.shortVersion(), QStringLiteral("1.5"));
}

TEST_F(BaseTest, TheVersionOfAnotherBundleIsReadFromItsPath) {
    const QString bundle = QStringLiteral("/tmp/l'app nuova/Parlivo.app");
    EXPECT_EQ(shortVersionOf(bundle), std::nullopt);
    mac::world().otherBundles[bundle] = {};
    EXPECT_EQ(shortVersionOf(bundle), std::nullopt);
    mac::world().otherBundles[bundle] = {
        {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("2.0")}};
    EXPECT_EQ(shortVersionOf(bundle), QStringLiteral("2.0"));
}

TEST_F(BaseTest, TheBundleLiesWhereItsLinksLead) {
    const QTemporaryDir folder;
    const QString real = QDir(folder.path()).canonicalPath() + QStringLiteral("/Parlivo.app");
    ASSERT_TRUE(QDir().mkpath(real));
    ASSERT_TRUE(QFile::link(real, folder.filePath(QStringLiteral("link.app"))));
    mac::world().bundlePath = folder.filePath(QStringLiteral("link.app"));
    EXPECT_EQ(MacBundle().location(), real);
}

TEST_F(BaseTest, TheSystemNamesItsVersion) {
    EXPECT_EQ(MacSystemVersion().description(), QStringLiteral("Version 14.5 (Build 23F79)"));
}

TEST_F(BaseTest, MessagesGoPubliclyToTheSystemsLog) {
    OsLog().write(QStringLiteral("100 % è %s"));
    EXPECT_EQ(mac::takeCalls().last(), QStringLiteral("log type 16 %{public}s «100 % è %s»"));
}

TEST_F(BaseTest, SettingsKeepTheirTypes) {
    MacUserDefaults defaults;
    const auto moment = QDateTime::fromMSecsSinceEpoch(1'700'000'000'123).toUTC();
    const std::map<QString, QVariant> settings{
        {QStringLiteral("onboardingDone"), true},
        {QStringLiteral("soundsEnabled"), false},
        {QStringLiteral("cleanupMinChars"), qlonglong{0}},
        {QStringLiteral("dictationCount"), qlonglong{5'000'000'000}},
        {QStringLiteral("language"), QStringLiteral("it")},
        {QStringLiteral("dictionary"), QStringLiteral("Pèrlò\n😀\n")},
        {QStringLiteral("feedbackPromptLastShown"), moment},
    };
    for (const auto& [key, value] : settings) defaults.setValue(key, value);
    for (const auto& [key, value] : settings) {
        EXPECT_EQ(mac::world().defaults.at(key).typeId(), value.typeId()) << key.toStdString();
        EXPECT_EQ(defaults.value(key).typeId(), value.typeId()) << key.toStdString();
        EXPECT_EQ(defaults.value(key), value) << key.toStdString();
    }
    defaults.setValue(QStringLiteral("cleanupMinChars"), 50);
    EXPECT_EQ(mac::world().defaults.at(QStringLiteral("cleanupMinChars")), QVariant(qlonglong{50}));
}

TEST_F(BaseTest, WhatOthersStoredIsReadAsItIs) {
    const MacUserDefaults defaults;
    mac::world().defaults[QStringLiteral("cleanupMinChars")] = 3.7;
    EXPECT_EQ(defaults.value(QStringLiteral("cleanupMinChars")), QVariant(3.7));
    EXPECT_FALSE(defaults.value(QStringLiteral("modelsDir")).isValid());
}

TEST_F(BaseTest, ARemovedSettingIsAbsent) {
    MacUserDefaults defaults;
    defaults.setValue(QStringLiteral("pendingChangelog"), QStringLiteral("…"));
    defaults.remove(QStringLiteral("pendingChangelog"));
    EXPECT_FALSE(defaults.value(QStringLiteral("pendingChangelog")).isValid());
    EXPECT_TRUE(mac::world().defaults.empty());
}

TEST_F(BaseTest, AValueOfNoSettingsTypeIsNotStored) {
    MacUserDefaults defaults;
    defaults.setValue(QStringLiteral("odd"), QStringList{QStringLiteral("a")});
    defaults.setValue(QStringLiteral("odd"), QVariant());
    EXPECT_TRUE(mac::world().defaults.empty());
}

TEST_F(BaseTest, SoundsArePlayedByName) {
    MacSounds sounds;
    for (const char* name : {"Tink", "Pop", "Basso"}) sounds.play(QString::fromLatin1(name));
    EXPECT_EQ(mac::takeCalls(),
              QStringList({QStringLiteral("sound Tink"), QStringLiteral("play"), QStringLiteral("sound Pop"),
                           QStringLiteral("play"), QStringLiteral("sound Basso"), QStringLiteral("play")}));
    sounds.play(QStringLiteral("Nonsense"));
    EXPECT_EQ(mac::takeCalls(), QStringList(QStringLiteral("sound Nonsense")));
}

TEST_F(BaseTest, TheVisibleFrameIsTurnedUpsideDown) {
    MacScreens screens;
    EXPECT_EQ(screens.mainVisibleFrame(), std::nullopt);
    // 25 points of menu bar at the top, 70 of Dock at the bottom.
    mac::world().screenFrames = {{0, 0, 1440, 900}};
    mac::world().visibleFrames = {{0, 70, 1440, 805}};
    mac::world().mainScreen = 0;
    EXPECT_EQ(screens.mainVisibleFrame(), QRect(0, 25, 1440, 805));
    EXPECT_TRUE(screens.transparencyAvailable());
}

TEST_F(BaseTest, TheMainScreenNeedNotBeTheFirst) {
    MacScreens screens;
    mac::world().screenFrames = {{0, 0, 1440, 900}, {-1920, 300, 1920, 1080}};
    mac::world().visibleFrames = {{0, 70, 1440, 805}, {-1920, 300, 1920, 1055}};
    mac::world().mainScreen = 1;
    // Its lower edge lies 300 above the first screen's, its upper one 480 above the first's upper one.
    EXPECT_EQ(screens.mainVisibleFrame(), QRect(-1920, -455, 1920, 1055));
}

TEST_F(BaseTest, ThePanelIsAboveAllOnEverySpaceAndActivatesNothing) {
    const auto view = mac::makeView();
    makePanelOf(view);
    orderFront(view);
    EXPECT_EQ(
        mac::windowOf(view),
        QStringList({QStringLiteral("style 128"), QStringLiteral("level 25"), QStringLiteral("behaviour 257"),
                     QStringLiteral("hides when inactive 0"), QStringLiteral("ignores mouse 1"),
                     QStringLiteral("shadow 1"), QStringLiteral("front")}));
}

}  // namespace
}  // namespace parlivo
