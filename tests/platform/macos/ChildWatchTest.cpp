// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/base/ChildWatch.h"
#include "support/ChildProcess.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/types.h>
#include <unistd.h>

namespace parlivo {
namespace {

/// How many processes are in the session that a child of ours leads: itself and its watcher.
int sessionSize(qint64 leader) {
    int size = 0;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& process : processes) {
        bool number = false;
        const auto id = static_cast<pid_t>(process.toInt(&number));
        if (number && getsid(id) == static_cast<pid_t>(leader)) ++size;
    }
    return size;
}

bool becomes(int size, qint64 leader) {
    return desktop::waitFor([=] { return sessionSize(leader) == size; });
}

/// The children of a program of its own, which can be killed.
class ChildWatchTest : public MacTest {
  protected:
    qint64 childOfAProgram(const QStringList& command) {
        program.start(QStringLiteral(PARLIVO_MAC_ORPHAN_MAKER), command);
        EXPECT_TRUE(program.waitForStarted());
        // The program tells once the child has been started: no copy of the pipe that says so is left open.
        EXPECT_TRUE(program.waitForReadyRead());
        return program.readLine().trimmed().toLongLong();
    }
    ~ChildWatchTest() override {
        program.kill();
        program.waitForFinished();
    }

    QProcess program;
};

TEST_F(ChildWatchTest, KillingTheProgramKillsItsChildAndEndsTheWatcher) {
    const qint64 child = childOfAProgram({QStringLiteral("/bin/sleep"), QStringLiteral("1000")});
    ASSERT_TRUE(becomes(2, child));
    program.kill();
    EXPECT_TRUE(becomes(0, child));
}

TEST_F(ChildWatchTest, AProgramThatEndsInOrderLeavesNoChildEither) {
    const qint64 child = childOfAProgram({QStringLiteral("/bin/sleep"), QStringLiteral("1000")});
    program.terminate();
    EXPECT_TRUE(becomes(0, child));
}

TEST_F(ChildWatchTest, AChildThatEndsByItselfEndsItsWatcher) {
    const QTemporaryDir folder;
    const QString gate = folder.filePath(QStringLiteral("gate"));
    const qint64 child =
        childOfAProgram({QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                         QStringLiteral("while [ ! -e '%1' ]; do sleep 0.05; done").arg(gate)});
    QFile file(gate);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(becomes(0, child));
    EXPECT_EQ(program.state(), QProcess::Running);
}

}  // namespace
}  // namespace parlivo
