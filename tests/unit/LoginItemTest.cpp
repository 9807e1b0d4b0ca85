// SPDX-License-Identifier: MIT
#include "platform/linux/session/XdgLoginItem.h"
#include "support/Error.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace parlivo {
namespace {

class LoginItemTest : public testing::Test {
  protected:
    LoginItemTest() : before_(qgetenv("XDG_CONFIG_HOME")) {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(dir_.path()));
    }
    ~LoginItemTest() override {
        if (before_.isEmpty()) {
            qunsetenv("XDG_CONFIG_HOME");
        } else {
            qputenv("XDG_CONFIG_HOME", before_);
        }
    }
    LoginItemTest(const LoginItemTest&) = delete;
    LoginItemTest& operator=(const LoginItemTest&) = delete;

    QString path() const { return dir_.filePath(QStringLiteral("autostart/it.parlivo.Parlivo.desktop")); }
    QByteArray entry() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void write(const QByteArray& text) const {
        QDir().mkpath(dir_.filePath(QStringLiteral("autostart")));
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QTemporaryDir dir_;
    XdgLoginItem item_{QStringLiteral("/opt/Parlivo.app/Contents/MacOS/Parlivo")};

  private:
    const QByteArray before_;
};

TEST_F(LoginItemTest, IsOffAtFirstAndGoesOnAndOff) {
    EXPECT_FALSE(item_.isEnabled());
    item_.setEnabled(true);
    EXPECT_TRUE(item_.isEnabled());
    EXPECT_TRUE(entry().startsWith("[Desktop Entry]\nType=Application\n"));
    EXPECT_TRUE(entry().contains("\nExec=\"/opt/Parlivo.app/Contents/MacOS/Parlivo\"\n"))
        << entry().toStdString();
    item_.setEnabled(false);
    EXPECT_FALSE(item_.isEnabled());
    EXPECT_FALSE(QFile::exists(path()));
    item_.setEnabled(false);
}

TEST_F(LoginItemTest, AnEntryThatIsHiddenOrSwitchedOffDoesNotCount) {
    item_.setEnabled(true);
    const QByteArray whole = entry();
    for (const char* line : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        write(whole + line);
        EXPECT_FALSE(item_.isEnabled()) << line;
    }
    write(whole + "Hidden=false\n[Desktop Action x]\nHidden=true\n");
    EXPECT_TRUE(item_.isEnabled());
    item_.setEnabled(true);
    EXPECT_TRUE(item_.isEnabled()) << "turning it on makes a new entry";
}

TEST_F(LoginItemTest, AnotherCopysEntryDoesNotCount) {
    write("[Desktop Entry]\nExec=/home/io/Parlivo.app/Contents/MacOS/Parlivo\n");
    EXPECT_FALSE(item_.isEnabled());
    write("[Desktop Entry]\nExec=/opt/Parlivo.app/Contents/MacOS/Parlivo --qualcosa\n");
    EXPECT_TRUE(item_.isEnabled());
    write("not an entry");
    EXPECT_FALSE(item_.isEnabled());
}

TEST_F(LoginItemTest, APathOfAnyCharactersComesBack) {
    XdgLoginItem odd(QStringLiteral("/home/io/100% \"mie\" $cose\\`qui`/Parlivo"));
    odd.setEnabled(true);
    EXPECT_TRUE(odd.isEnabled()) << entry().toStdString();
    EXPECT_TRUE(entry().contains("100%% \\\\\"mie\\\\\" \\\\$cose\\\\\\\\\\\\`qui\\\\`"))
        << entry().toStdString();
    EXPECT_FALSE(item_.isEnabled());
}

TEST_F(LoginItemTest, APathWithALineEndAddsNoLineToTheEntry) {
    XdgLoginItem odd(QStringLiteral("/home/io/due\nHidden=true\r\nrighe\t\\n/Parlivo"));
    odd.setEnabled(true);
    EXPECT_TRUE(odd.isEnabled()) << entry().toStdString();
    EXPECT_EQ(entry().count('\n'), 6) << entry().toStdString();
    EXPECT_TRUE(entry().contains("due\\nHidden=true\\r\\nrighe\t\\\\\\\\n/Parlivo")) << entry().toStdString();
}

TEST_F(LoginItemTest, AFolderThatCannotBeMadeIsAnError) {
    QFile blocker(dir_.filePath(QStringLiteral("autostart")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    EXPECT_THROW(item_.setEnabled(true), Error);
    EXPECT_FALSE(item_.isEnabled());
}

}  // namespace
}  // namespace parlivo
