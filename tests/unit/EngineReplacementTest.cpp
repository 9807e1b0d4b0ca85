// SPDX-License-Identifier: MIT
#include "EngineProcessFixture.h"
#include "platform/linux/base/ChildSetup.h"
#include "support/ChildProcesses.h"
#include "support/Http.h"

#include <QFileInfo>
#include <QProcess>

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <new>
#include <thread>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// How engines are ended and replaced.
class EngineReplacementTest : public EngineProcessTest {};

TEST_F(EngineReplacementTest, AServerThatEndedAfterItsAnswerIsReplaced) {
    installWhisper(answering(QStringLiteral("Ciao")));
    ASSERT_EQ(transcription(), QStringLiteral("Ciao"));
    send(starts().front().process, SIGKILL);
    ASSERT_TRUE(eventually([this] { return !lives(starts().front().process); }));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(EngineReplacementTest, AServerThatLoadsIsNotStartedAgain) {
    installWhisper({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    installLlama({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    Transcriber::ensureServer();
    LlamaRunner::ensureServer();
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 1U);
    EXPECT_EQ(starts(lightModel).size(), 1U);
}

TEST_F(EngineReplacementTest, AServerThatLoadsAnotherModelIsReplaced) {
    installLlama({{QStringLiteral("text"), QStringLiteral("lenta")}, {QStringLiteral("loading"), 3'600'000}});
    LlamaRunner::ensureServer();
    ASSERT_TRUE(eventually([this] { return !starts(lightModel).empty(); }));
    installLlama(answering(QStringLiteral("Ciao")), QStringLiteral("full"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_TRUE(eventually([this] { return !lives(starts(lightModel).front().process); }));
}

TEST_F(EngineReplacementTest, AnEngineThatLetsARequestTimeOutIsReplaced) {
    Clock::setScale(0.02);
    installWhisper({{QStringLiteral("onRequest"), QStringLiteral("never")}});
    installLlama({{QStringLiteral("onRequest"), QStringLiteral("never")}});
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_TRUE(eventually(
        [this] { return !lives(starts().front().process) && !lives(starts(lightModel).front().process); }));
    Clock::setScale(1);
    installWhisper(answering(QStringLiteral("Ciao")));
    installLlama(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
}

/// What a start waits at, seen by this process and the one that is being started.
struct StartGate {
    std::atomic<bool> reached = false;
    std::atomic<bool> open = false;
    std::atomic<pid_t> process = 0;  ///< the one that is being started
};

TEST_F(EngineReplacementTest, EndingAServerDoesNotWaitForItsStart) {
    installWhisper(answering(QStringLiteral("Ciao")));
    auto* gate =
        new (mmap(nullptr, sizeof(StartGate), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            StartGate;
    ChildProcess::setChildSetup([gate, setup = linuxChildSetup()] {
        setup();
        gate->process = getpid();
        gate->reached = true;
        while (!gate->open) usleep(1000);
    });
    std::thread pipeline([] { Transcriber::ensureServer(); });
    EXPECT_TRUE(eventually([gate] { return gate->reached.load(); }));
    auto stopped = std::async(std::launch::async, [] { Transcriber::stopServer(); });
    EXPECT_EQ(stopped.wait_for(seconds(20)), std::future_status::ready);
    gate->open = true;
    pipeline.join();
    stopped.wait();
    ChildProcess::setChildSetup(linuxChildSetup());
    EXPECT_TRUE(eventually([gate] { return !lives(gate->process); }))
        << "what was started meanwhile ends, too";
    munmap(gate, sizeof(StartGate));
}

TEST_F(EngineReplacementTest, AServerThatDiesInMidRequestIsReplacedByTheNext) {
    installWhisper({{QStringLiteral("onRequest"), QStringLiteral("die")}});
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    installWhisper(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(EngineReplacementTest, AServerKilledInMidRequestIsReplacedByTheNext) {
    installWhisper({{QStringLiteral("onRequest"), QStringLiteral("never")}});
    std::thread killer([this] {
        const QString asked = folder.filePath(QStringLiteral("ggml-model.bin.asked"));
        EXPECT_TRUE(eventually([&asked] { return QFileInfo::exists(asked); }));
        send(starts().front().process, SIGKILL);
    });
    const QString text = transcription();
    killer.join();
    EXPECT_EQ(text, QStringLiteral("error 4"));
    installWhisper(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
}

TEST_F(EngineReplacementTest, AHungServerIsReplaced) {
    installWhisper(answering(QStringLiteral("Ciao")));
    Clock::setScale(0.1);
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    send(starts().front().process, SIGSTOP);
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_GE(starts().size(), 2U);
    EXPECT_FALSE(lives(starts().front().process));
    EXPECT_EQ(starts().back().othersRunning, 0);
}

TEST_F(EngineReplacementTest, APortHeldByAnotherProgramIsGivenUp) {
    const StubServer mute(whisperPort, {{"/", [](const StubServer::Request&) { return silence(); }}});
    installWhisper(answering(QStringLiteral("Ciao")));
    hurry();
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    const StubServer other(llamaPort,
                           {{"/health", [](const StubServer::Request&) {
                                 return StubReply{"220 mail\r\n", StubReply::Manner::ThenClose, {}};
                             }}});
    installLlama(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
}

TEST_F(EngineReplacementTest, TheNextServerWaitsForTheEndOfTheFormer) {
    installWhisper({{QStringLiteral("text"), QStringLiteral("prima")}, {QStringLiteral("lingering"), 500}});
    EXPECT_EQ(transcription(), QStringLiteral("prima"));
    Transcriber::stopServer();
    installWhisper(answering(QStringLiteral("dopo")));
    EXPECT_EQ(transcription(), QStringLiteral("dopo")) << "the former still answers for half a second";
    ASSERT_EQ(starts().size(), 2U);
    EXPECT_EQ(starts().back().othersRunning, 0);
}

TEST_F(EngineReplacementTest, AServerThatWillNotEndIsKilled) {
    Clock::setScale(0.1);
    installLlama({{QStringLiteral("text"), QStringLiteral("prima")}, {QStringLiteral("deaf"), true}});
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("prima"));
    const qint64 former = starts(lightModel).front().process;
    installLlama(answering(QStringLiteral("dopo")), QStringLiteral("full"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("dopo"));
    EXPECT_FALSE(lives(former));
}

TEST_F(EngineReplacementTest, TheServerMayBeEndedAtAnyMomentByAnotherThread) {
    installWhisper(answering(QStringLiteral("Ciao")));
    installLlama(answering(QStringLiteral("Ciao")));
    std::atomic<bool> done = false;
    std::thread user([&done] {
        while (!done) {
            Transcriber::stopServer();
            LlamaRunner::shutdown();
            std::this_thread::sleep_for(milliseconds(40));
        }
    });
    Clock::setScale(0.02);
    for (int i = 0; i < 6; ++i) {
        const QString text = transcription();
        EXPECT_TRUE(text == QStringLiteral("Ciao") || text.startsWith(QStringLiteral("error")))
            << qPrintable(text);
        LlamaRunner::clean(QStringLiteral("x"));
    }
    done = true;
    user.join();
    for (const Start& start : starts()) EXPECT_EQ(start.othersRunning, 0);
}

TEST_F(EngineReplacementTest, TheEndOfTheProgramEndsTheWaitForAServer) {
    installWhisper({{QStringLiteral("loading"), 3'600'000}});
    Clock::setScale(0.2);
    QString text;
    std::thread pipeline([&] { text = transcription(); });
    EXPECT_TRUE(eventually([this] { return !starts().empty(); }));
    Clock::interruptAll();
    pipeline.join();
    EXPECT_EQ(text, QStringLiteral("error 3"));
    ChildProcess::endAll();
    EXPECT_FALSE(lives(starts().front().process));
}

TEST_F(EngineReplacementTest, KillingTheProgramKillsItsChildren) {
    installWhisper({{QStringLiteral("deaf"), true}});
    QProcess parent;
    parent.start(QStringLiteral(PARLIVO_ORPHAN_MAKER),
                 {stubEngine(), QStringLiteral("-m"), folder.filePath(QStringLiteral("ggml-model.bin")),
                  QStringLiteral("--port"), QStringLiteral("8765")});
    ASSERT_TRUE(parent.waitForStarted());
    ASSERT_TRUE(parent.waitForReadyRead());
    const qint64 child = parent.readLine().trimmed().toLongLong();
    ASSERT_TRUE(eventually([this] { return !starts().empty(); }));
    ASSERT_TRUE(lives(child));
    parent.kill();
    EXPECT_TRUE(parent.waitForFinished());
    EXPECT_TRUE(eventually([child] { return !lives(child); }));
}

}  // namespace
}  // namespace parlivo
