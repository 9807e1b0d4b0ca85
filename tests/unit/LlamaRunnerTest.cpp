// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/CleanupPrompt.h"
#include "engines/LlamaRunner.h"

#include <QJsonArray>
#include <QJsonObject>

namespace parlivo {
namespace {

using std::chrono::seconds;

QByteArray chatReply(const QByteArray& content) {
    return "{\"choices\":[{\"index\":0,\"message\":{\"role\":\"assistant\",\"content\":" + content + "}}]}";
}

/// The answers come from a stub on the port; the program that is started for it serves nothing.
class LlamaRunnerTest : public EngineTest {
  protected:
    LlamaRunnerTest() {
        installLlama({{QStringLiteral("idle"), true}});
        server.on("/health", StubReply::json({}));
        server.on("/v1/chat/completions", StubReply::body(chatReply("\"Ciao\"")));
    }
    ~LlamaRunnerTest() override { LlamaRunner::shutdown(); }

    StubServer server{llamaPort};
    const QString started =
        QStringLiteral("llama-server avviato (%1)").arg(llamaModelName(QStringLiteral("light")));
};

TEST_F(LlamaRunnerTest, TheRequestIsExact) {
    QString prompt = Config::builtinPrompt(CleanupLevel::Medium);
    prompt.replace(QStringLiteral("{TEXT}"),
                   QStringLiteral("Allora, ehm, «perché» no?\tDisse: \"{TEXT}\" \\ 👍"));
    EXPECT_EQ(LlamaRunner::clean(prompt), QStringLiteral("Ciao"));
    const auto requests = server.requests("/v1/chat/completions");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests.front().method, "POST");
    EXPECT_EQ(requests.front().header("Content-Type"), "application/json");
    EXPECT_EQ(requests.front().body, golden(QStringLiteral("chat.json")));
}

TEST_F(LlamaRunnerTest, TheAnswerIsPassedOnUnchanged) {
    server.on("/v1/chat/completions", StubReply::body(chatReply("\" \\n\\\"Ciao\\\"\\u0007 \""), 500));
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral(" \n\"Ciao\"\u0007 "));
}

TEST_F(LlamaRunnerTest, WithoutAModelNothingIsStartedOrAsked) {
    for (const char* tier : {"none", "unknown", ""}) {
        store(Settings::cleanupTier, QString::fromLatin1(tier));
        EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt) << tier;
    }
    EXPECT_TRUE(logged().isEmpty());
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(LlamaRunnerTest, TheServerIsStartedOnceForAllRequests) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(logged(), QStringList{started});
}

TEST_F(LlamaRunnerTest, AServerThatLoadsIsWaitedFor) {
    server.on("/health", {StubReply::json({}, 503), StubReply::json({}, 503), StubReply::body("?", 404),
                          StubReply::json({})});
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(server.requests("/health").size(), 4U);
}

TEST_F(LlamaRunnerTest, AServerThatNeverBecomesReadyIsGivenUp) {
    server.on("/health", StubReply::json({}, 503));
    hurry();
    std::optional<QString> answer = QStringLiteral("none yet");
    EXPECT_GE(statedTimeOf([&] { answer = LlamaRunner::clean(QStringLiteral("x")); }), seconds(60));
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_TRUE(server.requests("/v1/chat/completions").empty());
}

TEST_F(LlamaRunnerTest, AServerThatHangsIsGivenUp) {
    server.on("/v1/chat/completions", silence());
    hurry();
    std::optional<QString> answer = QStringLiteral("none yet");
    EXPECT_GE(statedTimeOf([&] { answer = LlamaRunner::clean(QStringLiteral("x")); }), seconds(85));
    EXPECT_EQ(answer, std::nullopt);
}

TEST_F(LlamaRunnerTest, ABrokenReplyIsNoAnswer) {
    const auto replies = brokenReplies(chatReply("\"Ciao\""));
    for (const auto& [name, reply] : replies) {
        server.on("/v1/chat/completions", reply);
        EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt) << name;
    }
    EXPECT_EQ(server.requests("/v1/chat/completions").size(), replies.size()) << "each asked once";
}

TEST_F(LlamaRunnerTest, AReplyOfAnotherShapeIsNoAnswer) {
    for (const QByteArray& reply :
         {QByteArray("{}"), QByteArray(R"({"choices":[]})"), QByteArray(R"({"choices":{"0":{}}})"),
          QByteArray(R"({"choices":["Ciao"]})"), QByteArray(R"({"choices":[{"message":"Ciao"}]})"),
          QByteArray(R"({"choices":[{"text":"Ciao"}]})"), QByteArray(R"({"choices":[{"message":{}}]})"),
          QByteArray(R"({"error":{"message":"no","code":400}})"), chatReply("5"), chatReply("null"),
          chatReply("[\"Ciao\"]")}) {
        server.on("/v1/chat/completions", StubReply::body(reply));
        EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt) << reply.constData();
    }
}

TEST_F(LlamaRunnerTest, AMissingProgramIsLoggedAndCostsNoWait) {
    server.on("/health", StubReply::json({}, 503));
    platform.bundle().resources = {{QStringLiteral("llama-server"), folder.filePath(QStringLiteral("gone"))}};
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), std::nullopt);
    const QStringList log = logged();
    ASSERT_EQ(log.size(), 1);
    const QString prefix = QStringLiteral("llama-server non avviabile: ");
    EXPECT_TRUE(log.front().startsWith(prefix) && log.front().size() > prefix.size())
        << qPrintable(log.front());
}

TEST_F(LlamaRunnerTest, AfterAShutDownTheNextRequestStartsItAgain) {
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    LlamaRunner::shutdown();
    LlamaRunner::shutdown();
    EXPECT_EQ(LlamaRunner::clean(QStringLiteral("x")), QStringLiteral("Ciao"));
    EXPECT_EQ(logged(), (QStringList{started, started}));
}

}  // namespace
}  // namespace parlivo
