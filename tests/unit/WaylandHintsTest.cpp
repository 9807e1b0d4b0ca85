// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/OwnKeyHint.h"
#include "platform/linux/kde/KeyGrant.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// A variable of the environment for the time of a test.
class Variable {
  public:
    Variable(const char* name, const QByteArray& value) : name_(name), before_(qgetenv(name)) {
        qputenv(name, value);
    }
    ~Variable() { qputenv(name_, before_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* const name_;
    const QByteArray before_;
};

class WaylandHintsTest : public testing::Test {
  protected:
    QTemporaryDir folder;
    /// No program is found, and none is started.
    Variable path{"PATH", folder.path().toLocal8Bit()};
};

TEST_F(WaylandHintsTest, KdesLeaveIsGivenByAButton) {
    const QString applications = folder.path() + u"/share/applications"_s;
    const kde::KeyGrant grant(u"/opt/a b/Parlivo.app/Contents/MacOS/Parlivo"_s, applications);
    auto hints = grant.hints();
    ASSERT_EQ(hints.size(), 1U);
    EXPECT_EQ(hints[0].topic, SessionHint::Topic::Text);
    EXPECT_EQ(hints[0].actionLabel, u"Consenti di incollare"_s);
    hints[0].action();
    QFile file(applications + u"/it.parlivo.Parlivo.keys.desktop"_s);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    EXPECT_TRUE(lines.contains("Exec=/opt/a b/Parlivo.app/Contents/MacOS/Parlivo"));
    EXPECT_TRUE(lines.contains("X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input"));
    EXPECT_TRUE(lines.contains("NoDisplay=true"));
    EXPECT_TRUE(grant.isWritten());
    hints = grant.hints();
    ASSERT_EQ(hints.size(), 1U);
    EXPECT_TRUE(hints[0].text.contains(u"entro qualche secondo"_s)) << qPrintable(hints[0].text);
    EXPECT_EQ(hints[0].action, nullptr);
    EXPECT_FALSE(kde::KeyGrant(u"/elsewhere/Parlivo"_s, applications).isWritten()) << "a moved program";
}

TEST_F(WaylandHintsTest, AFolderThatCannotBeWrittenLeavesTheButton) {
    QFile obstacle(folder.path() + u"/applications"_s);
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    const kde::KeyGrant grant(u"/opt/Parlivo"_s, obstacle.fileName());
    grant.write();
    EXPECT_FALSE(grant.isWritten());
    EXPECT_NE(grant.hints().at(0).action, nullptr);
}

TEST_F(WaylandHintsTest, WhereNoKeyCanBeTakenTheCommandIsGiven) {
    const Variable desktop("XDG_CURRENT_DESKTOP", "X-Unknown");
    const SessionHint hint = ownKeyHint();
    EXPECT_EQ(hint.topic, SessionHint::Topic::HotKey);
    EXPECT_EQ(hint.lines, toggleCommand());
    EXPECT_TRUE(hint.lines.contains(QCoreApplication::applicationFilePath())) << "not in the search path";
    QFile::link(QCoreApplication::applicationFilePath(), folder.path() + u"/parlivo"_s);
    EXPECT_EQ(toggleCommand(), u"parlivo --toggle"_s);
}

TEST_F(WaylandHintsTest, LabwcGetsTheLinesOfItsConfiguration) {
    const Variable desktop("XDG_CURRENT_DESKTOP", "labwc:wlroots");
    QFile::link(QCoreApplication::applicationFilePath(), folder.path() + u"/parlivo"_s);
    const SessionHint hint = ownKeyHint();
    EXPECT_TRUE(hint.text.contains(u"rc.xml"_s));
    EXPECT_EQ(
        hint.lines,
        u"<keybind key=\"A-space\">\n  <action name=\"Execute\" command=\"parlivo --toggle\"/>\n</keybind>"_s);
}

}  // namespace
}  // namespace parlivo
