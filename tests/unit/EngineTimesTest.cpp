// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/Cleaner.h"
#include "engines/LlamaRunner.h"
#include "engines/OllamaModels.h"
#include "engines/Transcriber.h"
#include "support/AskedWaits.h"

#include <QJsonArray>

#include <gmock/gmock.h>

#include <initializer_list>

namespace parlivo {
namespace {

using namespace std::chrono_literals;
using testing::UnorderedElementsAreArray;

using Waits = std::vector<std::chrono::milliseconds>;

/// Every time limit and interval of the engines' clients, exactly as it is asked of the clock.
class EngineTimesTest : public EngineTest {
  protected:
    ~EngineTimesTest() override {
        Transcriber::stopServer();
        LlamaRunner::shutdown();
    }

    /// What is asked of the clock for so many questions whether a server is alive, and for the rest.
    static Waits waitsOf(int probes, std::initializer_list<std::chrono::milliseconds> rest) {
        Waits waits(rest);
        for (int i = 0; i < probes; ++i) {
            waits.push_back(1000ms);
            waits.push_back(1500ms);
        }
        return waits;
    }

    static StubServer::Script answersFrom(int question, const StubReply& before) {
        return [question, before, asked = 0](const StubServer::Request&) mutable {
            return ++asked < question ? before : StubReply::json({});
        };
    }

    QString transcribe() {
        return Transcriber::transcribe(writeFile(QStringLiteral("recording.wav"), "RIFF"));
    }

    const StubReply spoken = StubReply::json({{QStringLiteral("text"), QStringLiteral("Ciao")}});
    const StubReply chatted = StubReply::json(
        {{QStringLiteral("choices"),
          QJsonArray{QJsonObject{{QStringLiteral("message"),
                                  QJsonObject{{QStringLiteral("content"), QStringLiteral("Ciao")}}}}}}});
};

TEST_F(EngineTimesTest, ATranscriptionByAWarmServer) {
    StubServer whisper(whisperPort);
    whisper.on("/", StubReply::json({}));
    whisper.on("/inference", spoken);
    const AskedWaits asked;
    EXPECT_EQ(transcribe(), QStringLiteral("Ciao"));
    EXPECT_THAT(asked.all(), UnorderedElementsAreArray(waitsOf(2, {30s, 120s, 125s})));
}

TEST_F(EngineTimesTest, ATranscriptionByAServerThatStarts) {
    StubServer whisper(whisperPort, {{"/", answersFrom(4, StubReply::of(StubReply::Manner::CloseAtOnce))}});
    whisper.on("/inference", spoken);
    installWhisper({{QStringLiteral("idle"), true}});
    const AskedWaits asked;
    EXPECT_EQ(transcribe(), QStringLiteral("Ciao"));
    EXPECT_THAT(asked.all(), UnorderedElementsAreArray(waitsOf(4, {5min, 30s, 300ms, 300ms, 120s, 125s})));
}

TEST_F(EngineTimesTest, ACleanupByAServerThatStarts) {
    StubServer llama(llamaPort, {{"/health", answersFrom(4, StubReply::json({}, 503))}});
    llama.on("/v1/chat/completions", chatted);
    installLlama({{QStringLiteral("idle"), true}});
    const AskedWaits asked;
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_THAT(asked.all(), UnorderedElementsAreArray(waitsOf(4, {5min, 60s, 400ms, 400ms, 90s, 95s})));
}

TEST_F(EngineTimesTest, ACleanupByOllama) {
    StubServer ollama(ollamaPort);
    ollama.on("/api/generate", StubReply::json({{QStringLiteral("response"), QStringLiteral("Ciao")}}));
    store(Settings::cleanupLevel, CleanupLevel::High);
    const AskedWaits asked;
    Cleaner::clean(QString(100, QLatin1Char('x')));
    ASSERT_EQ(ollama.requests("/api/generate").size(), 1U);
    EXPECT_THAT(asked.all(), UnorderedElementsAreArray(Waits{60s, 65s}));
}

TEST_F(EngineTimesTest, TheListOfOllamasModels) {
    StubServer ollama(ollamaPort);
    ollama.on("/api/tags", StubReply::of(StubReply::Manner::Never));
    const Lifetime owner;
    const AskedWaits asked;
    const auto request = OllamaModels::fetchNames(owner.token(), {});
    ASSERT_TRUE(ollama.waitForRequests("/api/tags", 1));
    EXPECT_EQ(asked.all(), Waits{3s});
}

TEST_F(EngineTimesTest, EndingAServer) {
    Clock::setScale(0.5);
    installLlama({{QStringLiteral("text"), QStringLiteral("Ciao")}, {QStringLiteral("deaf"), true}});
    ASSERT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    const AskedWaits asked;
    LlamaRunner::shutdown();
    LlamaRunner::ensureServer();
    EXPECT_EQ(asked.count(3s), 1) << "between the request to end and the kill";
    EXPECT_EQ(asked.count(6s), 1) << "no longer than that is waited for the end";
}

}  // namespace
}  // namespace parlivo
