// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/OllamaModels.h"
#include "support/Waiting.h"

#include <QJsonArray>

#include <optional>

namespace parlivo {
namespace {

class OllamaModelsTest : public EngineTest {
  protected:
    static QJsonObject offering(const QStringList& names) {
        QJsonArray models;
        for (const QString& name : names) models.append(QJsonObject{{QStringLiteral("name"), name}});
        return {{QStringLiteral("models"), models}};
    }

    void fetch() {
        request =
            OllamaModels::fetchNames(owner->token(), [this](const QStringList& names) { told = names; });
    }

    StubServer ollama{ollamaPort};
    std::optional<Lifetime> owner{std::in_place};
    std::optional<QStringList> told;
    std::unique_ptr<Worker> request;
};

TEST_F(OllamaModelsTest, TheNamesComeInAscendingOrder) {
    ollama.on("/api/tags", StubReply::json(offering({QStringLiteral("qwen:4b"), QStringLiteral("gemma:2b"),
                                                     QStringLiteral("mistral")})));
    fetch();
    ASSERT_TRUE(desktop::waitFor([this] { return told.has_value(); }));
    EXPECT_EQ(told, QStringList(
                        {QStringLiteral("gemma:2b"), QStringLiteral("mistral"), QStringLiteral("qwen:4b")}));
    EXPECT_EQ(ollama.requests("/api/tags").front().method, "GET");
}

TEST_F(OllamaModelsTest, AnAnswerOfAnotherShapeGivesNoNames) {
    for (const char* const answer : {"", "[]", "{}", "{\"models\": 3}", "<html>"}) {
        EXPECT_EQ(OllamaModels::names(answer), std::nullopt) << answer;
    }
    EXPECT_EQ(OllamaModels::names("{\"models\": []}"), QStringList());
    EXPECT_EQ(OllamaModels::names("{\"models\": [{\"name\": \"a\"}, {\"name\": 4}, {}, 7]}"),
              QStringList(QStringLiteral("a")));
}

TEST_F(OllamaModelsTest, ADestroyedOwnerIsNotCalled) {
    ollama.on("/api/tags", StubReply::json(offering({QStringLiteral("mistral")})));
    fetch();
    owner.reset();
    ASSERT_TRUE(ollama.waitForRequests("/api/tags", 1));
    request.reset();
    desktop::letPass(std::chrono::milliseconds(100));
    EXPECT_EQ(told, std::nullopt);
}

}  // namespace
}  // namespace parlivo
