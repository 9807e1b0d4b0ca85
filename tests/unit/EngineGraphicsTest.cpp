// SPDX-License-Identifier: MIT
#include "EngineProcessFixture.h"
#include "support/AskedWaits.h"
#include "support/ChildProcesses.h"

#include <QDir>

#include <thread>
#include <vector>

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

    /// Both engines were started twice, and the second time without.
    void expectBothToAnswerWithoutThem() {
        EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
        EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
        for (const auto& all : {starts(), starts(lightModel)}) {
            ASSERT_EQ(all.size(), 2U);
            EXPECT_EQ(all.front().arguments, all.back().arguments);
            EXPECT_FALSE(hasGraphics(all.back()));
        }
        EXPECT_EQ(logged().count(withdrawn), 2);
    }

    const QString engine = folder.filePath(QStringLiteral("engine/server"));
    const QString file =
        QDir(folder.path()).canonicalPath() + QStringLiteral("/engine/vulkan/libggml-vulkan.so");
    const QString withdrawn = QStringLiteral("server non funziona con il processore grafico: riparte senza");
    const QJsonObject exits{{QStringLiteral("exitAtStart"), 3}};
    const QJsonObject dies{{QStringLiteral("onRequest"), QStringLiteral("die")}};
    const QJsonObject crashes{{QStringLiteral("killedAtStart"), true}};
};

TEST_F(EngineGraphicsTest, AnEngineThatDiesComesUpWithoutThemForTheSameDictation) {
    install(answeringOnlyWithoutGraphics(crashes), answeringOnlyWithoutGraphics(exits));
    expectBothToAnswerWithoutThem();
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

TEST_F(EngineGraphicsTest, AnEngineThatDiesOfARequestAnswersItWithoutThem) {
    install(answeringOnlyWithoutGraphics(dies), answeringOnlyWithoutGraphics(dies));
    expectBothToAnswerWithoutThem();
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_EQ(starts().size(), 2U);
}

TEST_F(EngineGraphicsTest, AnEngineThatDiesOfALaterRequestAnswersItWithoutThem) {
    install(answering(QStringLiteral("prima")));
    EXPECT_EQ(transcription(), QStringLiteral("prima"));
    install(answeringOnlyWithoutGraphics(dies));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    ASSERT_EQ(starts().size(), 2U);
    EXPECT_FALSE(hasGraphics(starts().back()));
    EXPECT_EQ(logged(), QStringList{withdrawn});
}

TEST_F(EngineGraphicsTest, ARequestIsSentOnceMoreAndNoMore) {
    install(dies, dies);
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_EQ(starts().size(), 2U);
    EXPECT_EQ(starts(lightModel).size(), 2U);
    EXPECT_EQ(logged().count(withdrawn), 2);
    install(answering(QStringLiteral("Ciao")));
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    EXPECT_TRUE(hasGraphics(starts().back())) << "they were not the reason";
}

TEST_F(EngineGraphicsTest, AnEngineThatWasNotGivenThemIsNotAskedAgain) {
    installWhisper(dies);
    installLlama(dies);
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    EXPECT_EQ(starts().size(), 1U);
    EXPECT_EQ(starts(lightModel).size(), 1U);
}

TEST_F(EngineGraphicsTest, AnEngineThatHangsUpButLivesIsNotAskedAgain) {
    install({{QStringLiteral("onRequest"), QStringLiteral("hangUp")}});
    Transcriber::ensureServer();
    ASSERT_EQ(transcription(), QStringLiteral("error 4"));
    ASSERT_EQ(starts().size(), 1U);
    EXPECT_TRUE(lives(starts().front().process));
    EXPECT_EQ(logged(), QStringList());
}

TEST_F(EngineGraphicsTest, AnEngineThatIsEndedDuringARequestIsNotStartedAgain) {
    install({{QStringLiteral("onRequest"), QStringLiteral("never")}});
    std::thread user([this] {
        const QString asked = folder.filePath(QStringLiteral("ggml-model.bin.asked"));
        EXPECT_TRUE(eventually([&asked] { return QFile::exists(asked); }));
        Transcriber::stopServer();
    });
    EXPECT_EQ(transcription(), QStringLiteral("error 4"));
    user.join();
    EXPECT_EQ(starts().size(), 1U);
    EXPECT_EQ(logged(), QStringList());
}

TEST_F(EngineGraphicsTest, BothRequestsTogetherTakeNoLongerThanOneMay) {
    constexpr std::chrono::seconds limit{125};
    constexpr std::chrono::seconds withoutProgress{120};
    install(answeringOnlyWithoutGraphics(dies));
    const AskedWaits asked;
    EXPECT_EQ(transcription(), QStringLiteral("Ciao"));
    // What is left of the limit is asked for twice: for the new engine, and for the second request.
    const auto waits = asked.all();
    std::vector<std::chrono::milliseconds> left{limit};
    for (std::size_t i = 0; i + 1 < waits.size(); ++i) {
        if (waits[i] == limit && waits[i + 1] != withoutProgress) left.push_back(waits[i + 1]);
    }
    ASSERT_EQ(left.size(), 3U);
    EXPECT_LT(left[1], left[0]);
    EXPECT_LE(left[2], left[1]);
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
