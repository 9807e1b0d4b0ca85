// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "support/ChildProcess.h"
#include "support/ChildProcesses.h"
#include "support/Error.h"

#include <QCoreApplication>
#include <QProcess>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class ChildProcessTest : public EngineTest {
  protected:
    ~ChildProcessTest() override { ChildProcess::endAll(); }

    static ChildProcess::Program shell(const QString& script) {
        return {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}};
    }
};

TEST_F(ChildProcessTest, TellsHowTheProgramEnded) {
    const auto child = ChildProcess::launch(shell(QStringLiteral("exit 7")));
    EXPECT_TRUE(child->waitForExit(seconds(20)));
    EXPECT_FALSE(child->isRunning());
    EXPECT_EQ(child->exitStatus(), 7);
}

TEST_F(ChildProcessTest, AProgramEndedByASignalHasNoStatus) {
    const auto child = ChildProcess::launch(shell(QStringLiteral("exec sleep 1000")));
    EXPECT_TRUE(child->isRunning());
    EXPECT_EQ(child->exitStatus(), std::nullopt);
    child->terminate();
    child->terminate();
    EXPECT_TRUE(child->waitForExit(seconds(20)));
    EXPECT_EQ(child->exitStatus(), std::nullopt);
    child->terminate();
}

TEST_F(ChildProcessTest, AWaitEndsWithoutTheProgramWhenToldSo) {
    const auto child = ChildProcess::launch(shell(QStringLiteral("exec sleep 1000")));
    EXPECT_FALSE(child->waitForExit(milliseconds(1)));
    Clock::interruptAll();
    EXPECT_FALSE(child->waitForExit(seconds(1000)));
}

TEST_F(ChildProcessTest, GetsTheInstalledEnvironmentAndNothingSetSince) {
    ChildProcess::setEnvironment(QProcessEnvironment::systemEnvironment());
    qputenv("PARLIVO_TEST_OWN", "1");
    const auto child = ChildProcess::launch(shell(QStringLiteral("test -z \"$PARLIVO_TEST_OWN\"")));
    EXPECT_TRUE(child->waitForExit(seconds(20)));
    EXPECT_EQ(child->exitStatus(), 0);
    qunsetenv("PARLIVO_TEST_OWN");
    ChildProcess::setEnvironment(QProcessEnvironment(QProcessEnvironment::InheritFromParent));
}

TEST_F(ChildProcessTest, AProgramsOwnEnvironmentComesOnTop) {
    QProcessEnvironment common = QProcessEnvironment::systemEnvironment();
    const QProcessEnvironment inherited(QProcessEnvironment::InheritFromParent);
    qputenv("PARLIVO_TEST_KEPT", "1");
    qputenv("PARLIVO_TEST_OWN", "1");
    common.insert(QStringLiteral("PARLIVO_TEST_KEPT"), QStringLiteral("1"));
    common.insert(QStringLiteral("PARLIVO_TEST_OWN"), QStringLiteral("1"));
    for (const QProcessEnvironment& environment : {common, inherited}) {
        ChildProcess::setEnvironment(environment);
        auto program = shell(QStringLiteral("test \"$PARLIVO_TEST_KEPT$PARLIVO_TEST_OWN\" = 12"));
        program.environment = {{QStringLiteral("PARLIVO_TEST_OWN"), QStringLiteral("2")}};
        const auto child = ChildProcess::launch(program);
        EXPECT_TRUE(child->waitForExit(seconds(20)));
        EXPECT_EQ(child->exitStatus(), 0);
    }
    qunsetenv("PARLIVO_TEST_KEPT");
    qunsetenv("PARLIVO_TEST_OWN");
    ChildProcess::setEnvironment(inherited);
}

TEST_F(ChildProcessTest, AMissingProgramIsAnErrorWithTheSystemsReason) {
    try {
        ChildProcess::launch({folder.filePath(QStringLiteral("gone")), {}});
        FAIL() << "it was started";
    } catch (const Error& error) {
        EXPECT_FALSE(error.localizedDescription().isEmpty());
        EXPECT_NE(error.domain(), Error::programDomain());
    }
}

TEST_F(ChildProcessTest, AllChildrenEndWithTheProgram) {
    Clock::setScale(0.05);
    const auto meek = ChildProcess::launch(shell(QStringLiteral("exec sleep 1000")));
    const auto deaf =
        ChildProcess::launch(shell(QStringLiteral("trap '' TERM; while :; do sleep 1000; done")));
    const auto children = childProcessesOf(QCoreApplication::applicationPid());
    ASSERT_GE(children.size(), 2U);
    ChildProcess::endAll();
    EXPECT_FALSE(meek->isRunning());
    EXPECT_FALSE(deaf->isRunning());
    for (const qint64 child : children) EXPECT_FALSE(lives(child)) << child;
}

}  // namespace
}  // namespace parlivo
