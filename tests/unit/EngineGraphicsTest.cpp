// SPDX-License-Identifier: MIT
#include "EngineProcessFixture.h"
#include "support/ChildProcesses.h"

#include <QDir>

namespace parlivo {
namespace {

/// Engines that bring a file for graphics processors, whose drivers may be broken.
class EngineGraphicsTest : public EngineProcessTest {
  protected:
    EngineGraphicsTest() {
        QDir(folder.path()).mkpath(QStringLiteral("engine/vulkan"));
        EXPECT_TRUE(QFile::copy(stubEngine(), engine));
        writeFile(QStringLiteral("engine/vulkan/libggml-vulkan.so"), {});
    }

    void install(const QJsonObject& whisper, const QJsonObject& llama = {}) {
        installWhisper(whisper);
        installLlama(llama);
        platform.bundle().resources[QStringLiteral("whisper-server")] = engine;
        platform.bundle().resources[QStringLiteral("llama-server")] = engine;
    }

    static QJsonObject answeringOnlyWithoutGraphics(const QJsonObject& withGraphics) {
        return {{QStringLiteral("text"), QStringLiteral("Ciao")},
                {QStringLiteral("withGraphics"), withGraphics}};
    }

    /// Whether a running engine may use a graphics processor.
    bool hasGraphics(const Start& start) const {
        QFile environment(QStringLiteral("/proc/%1/environ").arg(start.process));
        EXPECT_TRUE(environment.open(QIODevice::ReadOnly));
        const QByteArray variable = "GGML_BACKEND_PATH=" + QFile::encodeName(file);
        return environment.readAll().split('\0').contains(variable);
    }

    const QString engine = folder.filePath(QStringLiteral("engine/server"));
    const QString file =
        QDir(folder.path()).canonicalPath() + QStringLiteral("/engine/vulkan/libggml-vulkan.so");
    const QString withdrawn = QStringLiteral("server non funziona con il processore grafico: riparte senza");
    const QJsonObject exits{{QStringLiteral("exitAtStart"), 3}};
    const QJsonObject crashes{{QStringLiteral("killedAtStart"), true}};
};

TEST_F(EngineGraphicsTest, AnEngineThatDiesComesUpWithoutThemForTheSameDictation) {
    install(answeringOnlyWithoutGraphics(crashes), answeringOnlyWithoutGraphics(exits));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    for (const auto& all : {starts(), starts(lightModel)}) {
        ASSERT_EQ(all.size(), 2U);
        EXPECT_EQ(all.front().arguments, all.back().arguments);
        EXPECT_FALSE(hasGraphics(all.back()));
    }
    EXPECT_EQ(logged().count(withdrawn), 2);
}

TEST_F(EngineGraphicsTest, AnEngineThatDiedUnwatchedComesUpWithoutThem) {
    install(answeringOnlyWithoutGraphics(crashes));
    Transcriber::ensureServer();
    ASSERT_TRUE(eventually([this] { return !starts().empty() && !lives(starts().front().process); }));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
    EXPECT_EQ(logged(), QStringList{withdrawn});
}

TEST_F(EngineGraphicsTest, TheyStayWithheldInLaterStarts) {
    install(answeringOnlyWithoutGraphics(crashes));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    Transcriber::stopServer();
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_EQ(starts().size(), 3U);
    EXPECT_FALSE(hasGraphics(starts().back()));
    EXPECT_EQ(logged(), QStringList{withdrawn});
}

TEST_F(EngineGraphicsTest, AnEngineThatDiesOfItsFirstRequestComesUpWithoutThem) {
    install(answeringOnlyWithoutGraphics({{QStringLiteral("onRequest"), QStringLiteral("die")}}));
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    // A look at the engine while it ends comes too early to tell.
    EXPECT_TRUE(eventually([this] { return transcription() == QStringLiteral("Ciao"); }));
    EXPECT_FALSE(hasGraphics(starts().back()));
}

TEST_F(EngineGraphicsTest, AnEngineThatNeverFinishesLoadingComesUpWithoutThem) {
    install(answeringOnlyWithoutGraphics({{QStringLiteral("idle"), true}}));
    Clock::setScale(0.001);
    Transcriber::ensureServer();
    Clock::setScale(1);
    ASSERT_TRUE(eventually([this] {
        Transcriber::ensureServer();
        return starts().size() == 2U;
    }));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_FALSE(hasGraphics(starts().back()));
    EXPECT_EQ(logged(), QStringList{withdrawn});
}

TEST_F(EngineGraphicsTest, AnEngineThatHasAnsweredKeepsThem) {
    install(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    send(starts().front().process, SIGKILL);
    ASSERT_TRUE(eventually([this] { return !lives(starts().front().process); }));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_EQ(starts().size(), 2U);
    EXPECT_TRUE(hasGraphics(starts().back()));
    EXPECT_EQ(logged(), QStringList());
}

TEST_F(EngineGraphicsTest, AnEngineThatWasEndedOnPurposeKeepsThem) {
    install({{QStringLiteral("idle"), true}});
    Transcriber::ensureServer();
    ASSERT_TRUE(eventually([this] { return !starts().empty(); }));
    Transcriber::stopServer();
    installWhisper(answering(QStringLiteral("Ciao")));
    platform.bundle().resources[QStringLiteral("whisper-server")] = engine;
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_TRUE(hasGraphics(starts().back()));
}

TEST_F(EngineGraphicsTest, AnEngineThatDiesWithoutThemTooGetsThemBack) {
    install(exits);
    EXPECT_EQ(transcription(), QStringLiteral("error 3"));
    EXPECT_EQ(starts().size(), 2U);
    install(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_EQ(starts().size(), 3U);
    EXPECT_TRUE(hasGraphics(starts().back()));
}

}  // namespace
}  // namespace parlivo
