// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/LlamaRunner.h"
#include "engines/Transcriber.h"
#include "platform/linux/base/ChildSetup.h"
#include "support/ChildProcess.h"
#include "support/ChildProcesses.h"
#include "support/Error.h"
#include "support/Http.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <future>
#include <new>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

void send(qint64 process, int signal) {
    ASSERT_EQ(kill(static_cast<pid_t>(process), signal), 0);
}

/// Engines that are started, fail and end: the stand-in program in their place.
class EngineProcessTest : public EngineTest {
  protected:
    struct Start {
        qint64 process = 0;
        int othersRunning = 0;
        QStringList arguments;
    };

    ~EngineProcessTest() override {
        Transcriber::stopServer();
        LlamaRunner::shutdown();
        ChildProcess::endAll();
    }

    /// The starts of the engine that loads this model.
    std::vector<Start> starts(const QString& model = QStringLiteral("ggml-model.bin")) const {
        QFile file(folder.filePath(model + QStringLiteral(".starts")));
        if (!file.open(QIODevice::ReadOnly)) return {};
        std::vector<Start> result;
        const QStringList lines =
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& line : lines) {
            QStringList words = line.split(QLatin1Char('\t'));
            const qint64 process = words.takeFirst().toLongLong();
            const int others = words.takeFirst().toInt();
            result.push_back({process, others, words});
        }
        return result;
    }

    QString transcription() {
        try {
            return Transcriber::transcribe(wav);
        } catch (const Error& error) {
            message = error.localizedDescription();
            return QStringLiteral("error %1").arg(error.code());
        }
    }

    static QJsonObject answering(const QString& text) { return {{QStringLiteral("text"), text}}; }

    QString message;  ///< of the last error
    const QString wav = writeFile(QStringLiteral("recording.wav"), "RIFF");
    const QString lightModel = llamaModelName(QStringLiteral("light"));
    const QString fullModel = llamaModelName(QStringLiteral("full"));
};

TEST_F(EngineProcessTest, WhisperServerGetsItsArguments) {
    installWhisper(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_EQ(starts().size(), 1U);
    EXPECT_EQ(starts().front().arguments.join(QLatin1Char(' ')),
              QStringLiteral("-m %1/ggml-model.bin --host 127.0.0.1 --port 8765 -bs 5").arg(folder.path()));
}

TEST_F(EngineProcessTest, LlamaServerGetsItsArguments) {
    installLlama(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    ASSERT_EQ(starts(lightModel).size(), 1U);
    EXPECT_EQ(starts(lightModel).front().arguments.join(QLatin1Char(' ')),
              QStringLiteral("-m %1/%2 --host 127.0.0.1 --port 8766 -c 4096").arg(folder.path(), lightModel));
}

TEST_F(EngineProcessTest, AWarmServerServesEveryDictation) {
    installWhisper(answering(QStringLiteral("Ciao")));
    Transcriber::ensureServer();
    HttpRequest look;
    look.url = QUrl(QStringLiteral("http://127.0.0.1:8765/"));
    EXPECT_TRUE(eventually([&look] { return Http::exchange(look).complete(); }));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 1U);
}

TEST_F(EngineProcessTest, AServerThatWasJustAliveIsNotAskedAgain) {
    installWhisper(answering(QStringLiteral("Ciao")));
    ASSERT_EQ(transcription(), QStringLiteral("Ciao"));
    const auto probes = [this] {
        return QFileInfo(folder.filePath(QStringLiteral("ggml-model.bin.probes"))).size();
    };
    const auto probesOfADictation = [this, &probes] {
        const qint64 before = probes();
        EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
        return probes() - before;
    };
    // On a busy machine the answer may be old before it is used.
    EXPECT_TRUE(eventually([&probesOfADictation] { return probesOfADictation() == 1; }));
}

TEST_F(EngineProcessTest, AServerThatEndedAfterItsAnswerIsReplaced) {
    installWhisper(answering(QStringLiteral("Ciao")));
    ASSERT_EQ(transcription(), QStringLiteral("Ciao"));
    send(starts().front().process, SIGKILL);
    ASSERT_TRUE(eventually([this] { return !lives(starts().front().process); }));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(EngineProcessTest, SlowLoadingIsWaitedFor) {
    installWhisper({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    installLlama({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 1U);
    EXPECT_EQ(starts(lightModel).size(), 1U);
}

TEST_F(EngineProcessTest, AMissingProgramIsReportedToTheSystemAndGivenUp) {
    platform.bundle().resources = {
        {QStringLiteral("whisper-server"), folder.filePath(QStringLiteral("gone"))}};
    hurry();
    QString text;
    EXPECT_GE(statedTimeOf([&] { text = transcription(); }), seconds(30));
    EXPECT_EQ(text, QStringLiteral("error 3"));
    const QStringList lines = platform.systemLog().lines();
    ASSERT_EQ(lines.size(), 1);
    const QString prefix = QStringLiteral("Parlivo: impossibile avviare whisper-server: ");
    EXPECT_TRUE(lines.front().startsWith(prefix) && lines.front().size() > prefix.size())
        << qPrintable(lines.front());
}

TEST_F(EngineProcessTest, AProgramThatIsNotExecutableIsReportedToTheSystem) {
    platform.bundle().resources = {{QStringLiteral("whisper-server"), wav}};
    Transcriber::ensureServer();
    EXPECT_EQ(platform.systemLog().lines().size(), 1);
}

TEST_F(EngineProcessTest, NoEngineLooksForLibrariesInTheCurrentFolder) {
    installWhisper({{QStringLiteral("idle"), true}});
    installLlama({{QStringLiteral("idle"), true}});
    Transcriber::ensureServer();
    LlamaRunner::ensureServer();
    ASSERT_TRUE(eventually([this] { return !starts().empty() && !starts(lightModel).empty(); }));
    for (const Start& start : {starts().front(), starts(lightModel).front()}) {
        EXPECT_EQ(QFile::symLinkTarget(QStringLiteral("/proc/%1/cwd").arg(start.process)),
                  QStringLiteral("/"));
    }
}

TEST_F(EngineProcessTest, AnEngineWithoutItsProcessorLibrariesIsReported) {
    installWhisper(answering(QStringLiteral("Ciao")));
    installLlama(answering(QStringLiteral("Ciao")));
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("engine")));
    const QString server = folder.filePath(QStringLiteral("engine/server"));
    const QString link = folder.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::copy(stubEngine(), server) && QFile::link(server, link));
    writeFile(QStringLiteral("engine/libggml-base.so.0"), {});
    platform.bundle().resources[QStringLiteral("whisper-server")] = link;
    platform.bundle().resources[QStringLiteral("llama-server")] = link;

    Transcriber::ensureServer();
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    const QString reason = QStringLiteral("mancano i file libggml-cpu-*.so in %1/engine: reinstalla Parlivo")
                               .arg(QDir(folder.path()).canonicalPath());
    EXPECT_EQ(platform.systemLog().lines(),
              QStringList{QStringLiteral("Parlivo: impossibile avviare whisper-server: ") + reason});
    EXPECT_EQ(logged(), QStringList{QStringLiteral("llama-server non avviabile: ") + reason});
    EXPECT_TRUE(starts().empty() && starts(lightModel).empty());

    writeFile(QStringLiteral("engine/libggml-cpu-x64.so"), {});
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
}

TEST_F(EngineProcessTest, AProgramThatDiesAtStartIsNotWaitedFor) {
    installWhisper({{QStringLiteral("exitAtStart"), 3}});
    const auto took = statedTimeOf(
        [&] {
            EXPECT_EQ(transcription(), QStringLiteral("error 3"));
            EXPECT_EQ(message, QStringLiteral("whisper-server non risponde"));
            EXPECT_EQ(starts().size(), 1U);
            installLlama({{QStringLiteral("exitAtStart"), 1}});
            EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
            EXPECT_EQ(starts(lightModel).size(), 1U);
        },
        1);
    EXPECT_LT(took, seconds(30)) << "the shorter of the two limits";
}

TEST_F(EngineProcessTest, AModelThatIsNotThereIsNamed) {
    installWhisper({});
    store(Settings::modelsDir, folder.path());
    platform.bundle().resources[QStringLiteral("ggml-model.bin")] =
        folder.filePath(QStringLiteral("gone.bin"));
    const QString best = ModelCatalog::asrTier(QStringLiteral("best")).fileName;
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(message, QStringLiteral("modello mancante: ") + best);
    EXPECT_EQ(logged().last(), QStringLiteral("modello mancante: ") + folder.filePath(best));
    writeFile(best, "half of it");
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(message, QStringLiteral("modello incompleto: ") + best);
    EXPECT_EQ(
        logged().last(),
        QStringLiteral("modello incompleto: %1 (10 byte invece di 874188075)").arg(folder.filePath(best)));
    installLlama({});
    QFile::remove(folder.filePath(lightModel));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_EQ(logged().last(), QStringLiteral("modello mancante: ") + folder.filePath(lightModel));
}

TEST_F(EngineProcessTest, AServerThatLoadsIsNotStartedAgain) {
    installWhisper({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    installLlama({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("loading"), 700}});
    Transcriber::ensureServer();
    LlamaRunner::ensureServer();
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 1U);
    EXPECT_EQ(starts(lightModel).size(), 1U);
}

TEST_F(EngineProcessTest, AServerThatLoadsAnotherModelIsReplaced) {
    installLlama({{QStringLiteral("text"), QStringLiteral("lenta")}, {QStringLiteral("loading"), 3'600'000}});
    LlamaRunner::ensureServer();
    ASSERT_TRUE(eventually([this] { return !starts(lightModel).empty(); }));
    installLlama(answering(QStringLiteral("Ciao")), QStringLiteral("full"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_TRUE(eventually([this] { return !lives(starts(lightModel).front().process); }));
}

TEST_F(EngineProcessTest, AnEngineThatLetsARequestTimeOutIsReplaced) {
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

TEST_F(EngineProcessTest, EndingAServerDoesNotWaitForItsStart) {
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

TEST_F(EngineProcessTest, AServerThatDiesInMidRequestIsReplacedByTheNext) {
    installWhisper({{QStringLiteral("onRequest"), QStringLiteral("die")}});
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    installWhisper(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(EngineProcessTest, AServerKilledInMidRequestIsReplacedByTheNext) {
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

TEST_F(EngineProcessTest, AHungServerIsReplaced) {
    installWhisper(answering(QStringLiteral("Ciao")));
    Clock::setScale(0.1);
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    send(starts().front().process, SIGSTOP);
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_GE(starts().size(), 2U);
    EXPECT_FALSE(lives(starts().front().process));
    EXPECT_EQ(starts().back().othersRunning, 0);
}

TEST_F(EngineProcessTest, APortHeldByAnotherProgramIsGivenUp) {
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

TEST_F(EngineProcessTest, TheNextServerWaitsForTheEndOfTheFormer) {
    installWhisper({{QStringLiteral("text"), QStringLiteral("prima")}, {QStringLiteral("lingering"), 500}});
    EXPECT_EQ(transcription(), QStringLiteral("prima"));
    Transcriber::stopServer();
    installWhisper(answering(QStringLiteral("dopo")));
    EXPECT_EQ(transcription(), QStringLiteral("dopo")) << "the former still answers for half a second";
    ASSERT_EQ(starts().size(), 2U);
    EXPECT_EQ(starts().back().othersRunning, 0);
}

TEST_F(EngineProcessTest, AServerThatWillNotEndIsKilled) {
    Clock::setScale(0.1);
    installLlama({{QStringLiteral("text"), QStringLiteral("prima")}, {QStringLiteral("deaf"), true}});
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("prima"));
    const qint64 former = starts(lightModel).front().process;
    installLlama(answering(QStringLiteral("dopo")), QStringLiteral("full"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("dopo"));
    EXPECT_FALSE(lives(former));
}

TEST_F(EngineProcessTest, TheServerMayBeEndedAtAnyMomentByAnotherThread) {
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

TEST_F(EngineProcessTest, TheEndOfTheProgramEndsTheWaitForAServer) {
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

TEST_F(EngineProcessTest, KillingTheProgramKillsItsChildren) {
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
