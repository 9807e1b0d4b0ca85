// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/DesktopWorkspace.h"
#include "support/FakePlatform.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// A desktop with no programs but those that a test puts there. They note how they were called.
class DesktopWorkspaceTest : public testing::Test {
  protected:
    DesktopWorkspaceTest() {
        qputenv("PATH", QFile::encodeName(programs_.path()));
        qunsetenv("XDG_CURRENT_DESKTOP");
        bundle_.resources[u"help/microfono.html"_s] = u"/bundle/microfono.html"_s;
        bundle_.resources[u"help/accessibilita.html"_s] = u"/bundle/accessibilita.html"_s;
    }
    ~DesktopWorkspaceTest() override {
        qputenv("PATH", path_);
        qputenv("XDG_CURRENT_DESKTOP", desktop_);
    }
    DesktopWorkspaceTest(const DesktopWorkspaceTest&) = delete;
    DesktopWorkspaceTest& operator=(const DesktopWorkspaceTest&) = delete;

    QProcessEnvironment environment() const {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"NOTES"_s, notes_.path());
        return environment;
    }

    void install(const QString& name) {
        QFile program(programs_.filePath(name));
        ASSERT_TRUE(program.open(QIODevice::WriteOnly));
        program.write(
            "#!/bin/sh\n"
            "printf '%s' \"$*\" >\"$NOTES/${0##*/}\"\n"
            ": >\"$NOTES/done\"\n");
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// The program that was started and its arguments. One start at a time.
    QString started() {
        QFile done(notes_.filePath(u"done"_s));
        if (!desktop::waitFor([&] { return done.exists(); })) return {};
        done.remove();
        const QString name = QDir(notes_.path()).entryList(QDir::Files).value(0);
        QFile notes(notes_.filePath(name));
        if (!notes.open(QIODevice::ReadOnly)) return {};
        const QString arguments = QString::fromUtf8(notes.readAll());
        notes.remove();
        return arguments.isEmpty() ? name : name + u' ' + arguments;
    }

    QString startedFor(PrivacyPane pane) {
        workspace_.openPrivacyPane(pane);
        return started();
    }

    const QByteArray path_ = qgetenv("PATH");
    const QByteArray desktop_ = qgetenv("XDG_CURRENT_DESKTOP");
    QTemporaryDir programs_;
    QTemporaryDir notes_;
    fake::Bundle bundle_;
    fake::SystemLog log_;
    DesktopWorkspace workspace_{bundle_, log_, environment()};
};

TEST_F(DesktopWorkspaceTest, OpensAddressesAndFilesWithTheUsersOwnProgram) {
    install(u"xdg-open"_s);
    workspace_.open(QUrl(u"https://parlivo.example/novità?a=b&c=d"_s));
    EXPECT_EQ(started(), u"xdg-open https://parlivo.example/novit%C3%A0?a=b&c=d"_s);
    workspace_.open(QUrl::fromLocalFile(u"/home/utente/una cartella"_s));
    EXPECT_EQ(started(), u"xdg-open file:///home/utente/una%20cartella"_s);
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(DesktopWorkspaceTest, OpensTheFirstSoundSettingsThereAre) {
    install(u"pavucontrol"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"pavucontrol"_s);
    install(u"xfce4-settings-manager"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"xfce4-settings-manager"_s);
    install(u"systemsettings"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"systemsettings kcm_pulseaudio"_s);
    install(u"gnome-control-center"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"gnome-control-center sound"_s);
}

TEST_F(DesktopWorkspaceTest, LeavesOutSettingsThatRefuseToRunHere) {
    for (const auto& name : {u"pavucontrol"_s, u"xfce4-settings-manager"_s, u"gnome-control-center"_s})
        install(name);
    qputenv("XDG_CURRENT_DESKTOP", "LXQt");
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"pavucontrol"_s);
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"xfce4-settings-manager"_s);
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"gnome-control-center sound"_s);
}

TEST_F(DesktopWorkspaceTest, ShowsHelpWhereThereIsNothingToSet) {
    install(u"xdg-open"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Accessibility), u"xdg-open file:///bundle/accessibilita.html"_s);
    EXPECT_EQ(startedFor(PrivacyPane::Microphone), u"xdg-open file:///bundle/microfono.html"_s)
        << "no sound settings at all";
}

TEST_F(DesktopWorkspaceTest, LogsWhatCannotBeOpened) {
    workspace_.open(QUrl(u"https://parlivo.example/"_s));
    EXPECT_EQ(log_.lines(), QStringList{u"impossibile avviare xdg-open"_s});
    bundle_.resources.clear();
    workspace_.openPrivacyPane(PrivacyPane::Accessibility);
    EXPECT_EQ(log_.lines().value(1), u"pagina di aiuto mancante: accessibilita.html"_s);
}

TEST_F(DesktopWorkspaceTest, StartsProgramsInTheGivenEnvironment) {
    install(u"xdg-open"_s);
    QFile program(programs_.filePath(u"xdg-open"_s));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write(
        "#!/bin/sh\n"
        "printf '%s' \"${PARLIVO_TEST_OWN-absent}\" >\"$NOTES/environment\"\n"
        ": >\"$NOTES/done\"\n");
    program.close();
    qputenv("PARLIVO_TEST_OWN", "1");
    workspace_.open(QUrl(u"https://parlivo.example/"_s));
    EXPECT_EQ(started(), u"environment absent"_s) << "a variable that this process set for itself";
    qunsetenv("PARLIVO_TEST_OWN");
}

}  // namespace
}  // namespace parlivo
