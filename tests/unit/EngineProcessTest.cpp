// SPDX-License-Identifier: MIT
#include "EngineProcessFixture.h"
#include "support/Http.h"

#include <QDir>
#include <QFileInfo>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

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

}  // namespace
}  // namespace parlivo
