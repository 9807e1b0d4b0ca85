// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "engines/Cleaner.h"
#include "engines/LlamaRunner.h"
#include "support/Text.h"

#include <QJsonArray>

#include <random>

namespace parlivo {
namespace {

using namespace std::string_literals;

using std::chrono::seconds;

QString repeated(const QString& character, qsizetype count) {
    return character.repeated(count);
}

const QString longText =
    QStringLiteral("allora ehm domani praticamente vado al mercato e compro tipo le mele e le pere mature");

class CleanerTest : public EngineTest {
  protected:
    CleanerTest() { ollamaSays(QStringLiteral("Ciao")); }
    ~CleanerTest() override { LlamaRunner::shutdown(); }

    void ollamaSays(const QString& text) {
        ollama.on("/api/generate", StubReply::json({{QStringLiteral("response"), text}}));
    }
    void llamaSays(const QString& text) {
        const QJsonObject message{{QStringLiteral("content"), text}};
        llama.on("/v1/chat/completions",
                 StubReply::json({{QStringLiteral("choices"),
                                   QJsonArray{QJsonObject{{QStringLiteral("message"), message}}}}}));
        llama.on("/health", StubReply::json({}));
        installLlama({{QStringLiteral("idle"), true}});
    }
    QString cleanedAs(const QString& answer, const QString& raw) {
        ollamaSays(answer);
        return Cleaner::clean(raw);
    }
    QJsonObject askedOfOllama() const {
        const auto requests = ollama.requests("/api/generate");
        return requests.empty() ? QJsonObject() : QJsonDocument::fromJson(requests.back().body).object();
    }
    QString promptForOllama() const { return askedOfOllama().value(QLatin1String("prompt")).toString(); }

    StubServer ollama{ollamaPort};
    StubServer llama{llamaPort};
};

TEST_F(CleanerTest, LevelNoneLeavesTheTextAloneWithoutAskingAnybody) {
    store(Settings::cleanupLevel, QStringLiteral("none"));
    llamaSays(longText);
    EXPECT_EQ(Cleaner::clean(longText), longText);
    EXPECT_TRUE(ollama.requests().empty());
    EXPECT_TRUE(llama.requests().empty());
    EXPECT_TRUE(logged().isEmpty());
}

TEST_F(CleanerTest, OnlyTextsLongerThanTheMinimumAreCleaned) {
    const QString answer = QString(50, QLatin1Char('b'));
    EXPECT_EQ(cleanedAs(answer, repeated(QStringLiteral("a"), 50)), repeated(QStringLiteral("a"), 50));
    EXPECT_EQ(cleanedAs(answer, repeated(QStringLiteral("a"), 51)), answer);
    const QString family = QStringLiteral("👨‍👩‍👧‍👦");
    EXPECT_EQ(cleanedAs(answer, repeated(family, 50)), repeated(family, 50)) << "characters, not code units";
    EXPECT_EQ(cleanedAs(answer, repeated(family, 51)), answer);
    store(Settings::cleanupMinChars, 0);
    EXPECT_EQ(cleanedAs(QStringLiteral("B"), QStringLiteral("a")), QStringLiteral("B"));
    EXPECT_EQ(cleanedAs(QStringLiteral("B"), QString()), QString());
    EXPECT_EQ(ollama.requests().size(), 3U);
}

TEST_F(CleanerTest, TheRequestToOllamaIsExact) {
    store(Settings::cleanupMinChars, 0);
    Cleaner::clean(QStringLiteral("Allora, ehm, «perché» no?\tDisse: \"{TEXT}\" \\ 👍"));
    const auto requests = ollama.requests("/api/generate");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests.front().method, "POST");
    EXPECT_EQ(requests.front().header("Content-Type"), "application/json");
    EXPECT_EQ(requests.front().body, golden(QStringLiteral("ollama.json")));
}

TEST_F(CleanerTest, OllamaIsAskedForTheUsersModelAtTheUsersLevel) {
    store(Settings::cleanupModel, QStringLiteral("mistral"));
    store(Settings::cleanupLevel, QStringLiteral("light"));
    Cleaner::clean(longText);
    EXPECT_EQ(askedOfOllama().value(QLatin1String("model")).toString(), QStringLiteral("mistral"));
    EXPECT_TRUE(promptForOllama().contains(QStringLiteral("NON rimuovere né cambiare nessuna parola")));
}

TEST_F(CleanerTest, TheUsersPromptTakesTheTextAtEveryPlaceholder) {
    store(Settings::customPromptEnabled, true);
    QFile prompt(Config::promptFile());
    ASSERT_TRUE(prompt.open(QIODevice::WriteOnly));
    prompt.write("Prima: {TEXT}. Di nuovo: {TEXT}. {text}");
    prompt.close();
    Cleaner::clean(longText);
    EXPECT_EQ(promptForOllama(), QStringLiteral("Prima: %1. Di nuovo: %1. {text}").arg(longText));
}

TEST_F(CleanerTest, AUsersPromptWithoutPlaceholderIsSentAsItIs) {
    store(Settings::customPromptEnabled, true);
    QFile prompt(Config::promptFile());
    ASSERT_TRUE(prompt.open(QIODevice::WriteOnly));
    prompt.write("Saluta.");
    prompt.close();
    ollamaSays(QStringLiteral("Ciao!"));
    EXPECT_EQ(Cleaner::clean(longText), longText) << "an answer that cannot be the text";
    EXPECT_EQ(promptForOllama(), QStringLiteral("Saluta."));
}

TEST_F(CleanerTest, ADictatedPlaceholderIsNotReplaced) {
    const QString raw = QStringLiteral("metti {TEXT} qui e poi ancora {TEXT} là, come ti dicevo prima");
    Cleaner::clean(raw);
    EXPECT_EQ(promptForOllama().count(QStringLiteral("{TEXT}")), 2);
    EXPECT_TRUE(promptForOllama().contains(QStringLiteral("grezza:\n") + raw + QStringLiteral("\n\n")));
}

TEST_F(CleanerTest, OnePairOfQuotesIsTakenOff) {
    store(Settings::cleanupMinChars, 0);
    const QString raw = QStringLiteral("abcd");
    const std::vector<std::pair<QString, QString>> cases = {
        {QStringLiteral("\"Abcd\""), QStringLiteral("Abcd")},
        {QStringLiteral(" \n\"Abcd\"\t\n"), QStringLiteral("Abcd")},
        {QStringLiteral("\"\"Abcd\"\""), QStringLiteral("\"Abcd\"")},
        {QStringLiteral("\" Abcd \""), QStringLiteral(" Abcd ")},
        {QStringLiteral("\"a\""), QStringLiteral("a")},
        {QStringLiteral("\"\""), QStringLiteral("\"\"")},
        {QStringLiteral("\""), QStringLiteral("\"")},
        {QStringLiteral("\"Abcd"), QStringLiteral("\"Abcd")},
        {QStringLiteral("«Abcd»"), QStringLiteral("«Abcd»")},
        {QStringLiteral("'Abcd'"), QStringLiteral("'Abcd'")},
        {QStringLiteral("\"\u0301Abcd\""), QStringLiteral("\"\u0301Abcd\"")},
    };
    for (const auto& [answer, expected] : cases)
        EXPECT_EQ(cleanedAs(answer, raw), expected) << qPrintable(answer);
}

TEST_F(CleanerTest, AnAnswerOfAnotherLengthIsRejected) {
    const QString raw = repeated(QStringLiteral("a"), 90);
    for (const QString& character :
         {QStringLiteral("b"), QStringLiteral("👍🏽"), QStringLiteral("e\u0301")}) {
        EXPECT_EQ(cleanedAs(repeated(character, 29), raw), raw);
        EXPECT_EQ(cleanedAs(repeated(character, 30), raw), repeated(character, 30));
        EXPECT_EQ(cleanedAs(repeated(character, 270), raw), repeated(character, 270));
        EXPECT_EQ(cleanedAs(repeated(character, 271), raw), raw);
    }
    const QString odd = repeated(QStringLiteral("a"), 92);
    EXPECT_EQ(cleanedAs(repeated(QStringLiteral("b"), 30), odd), repeated(QStringLiteral("b"), 30))
        << "92 / 3 = 30";
}

TEST_F(CleanerTest, ABlankAnswerIsRejected) {
    for (const QString& blank : {QString(), QStringLiteral(" \t\r\n\u00a0\u2028 ")}) {
        EXPECT_EQ(cleanedAs(blank, longText), longText);
    }
}

TEST_F(CleanerTest, ControlCharactersInsideAnAnswerDoNoHarm) {
    const QString answer = longText + QStringLiteral("\u0000\u0007\u001b[2J\u200b") + QChar(0xfeff);
    EXPECT_EQ(cleanedAs(answer, longText), answer);
}

TEST_F(CleanerTest, TheBuiltInEngineIsPreferred) {
    const QString answer = longText + QLatin1Char('.');
    llamaSays(QLatin1Char('"') + answer + QStringLiteral("\"\n"));
    EXPECT_EQ(Cleaner::clean(longText), answer);
    EXPECT_TRUE(ollama.requests().empty());
}

TEST_F(CleanerTest, AnAnswerOfTheBuiltInEngineThatIsRejectedIsNotAskedForElsewhere) {
    llamaSays(QStringLiteral("No."));
    EXPECT_EQ(Cleaner::clean(longText), longText);
    EXPECT_TRUE(ollama.requests().empty());
}

TEST_F(CleanerTest, OllamaIsAskedWhenTheBuiltInEngineFails) {
    const QString answer = longText + QLatin1Char('!');
    llamaSays({});
    llama.on("/v1/chat/completions", StubReply::body("<html>"));
    EXPECT_EQ(cleanedAs(answer, longText), answer);
}

TEST_F(CleanerTest, WhenNobodyAnswersTheRawTextComesBack) {
    llamaSays({});
    llama.on("/v1/chat/completions", StubReply::of(StubReply::Manner::CloseAtOnce));
    for (const auto& [name, reply] : brokenReplies(R"({"response":"Ciao"})")) {
        ollama.on("/api/generate", reply);
        EXPECT_EQ(Cleaner::clean(longText), longText) << name;
    }
    for (const char* reply : {"{\"error\":\"model 'gemma3:4b' not found\"}", "{\"response\":7}", "{}"}) {
        ollama.on("/api/generate", StubReply::body(reply, 404));
        EXPECT_EQ(Cleaner::clean(longText), longText) << reply;
    }
}

TEST_F(CleanerTest, EnginesThatHangAreGivenUpAtTheirDeadlines) {
    llamaSays({});
    llama.on("/v1/chat/completions", silence());
    ollama.on("/api/generate", silence());
    hurry();
    QString text;
    EXPECT_GE(statedTimeOf([&] { text = Cleaner::clean(longText); }), seconds(85 + 57));
    EXPECT_EQ(text, longText);
}

TEST_F(CleanerTest, TheEndOfTheProgramEndsTheWait) {
    ollama.on("/api/generate", silence());
    QString text;
    std::thread pipeline([&] { text = Cleaner::clean(longText); });
    EXPECT_TRUE(ollama.waitForRequests("/api/generate", 1));
    Clock::interruptAll();
    pipeline.join();
    EXPECT_EQ(text, longText);
}

TEST_F(CleanerTest, AnyAnswerGivesItsTextOrTheRawOne) {
    const std::u32string alphabet =
        U"aè\"\"\"  \n\t\u0000\u001b\u0301👍🏽\u200d🇮🇹가\ufeff\u00a0{}\\"s;
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        QString answer;
        for (auto length = random() % 300; length > 0; --length) {
            answer += QString::fromUcs4(&alphabet[random() % alphabet.size()], 1);
        }
        const QString text = cleanedAs(answer, longText);
        if (text == longText) continue;
        EXPECT_TRUE(answer.contains(text));
        EXPECT_GE(Text::countCharacters(text), Text::countCharacters(longText) / 3);
        EXPECT_LE(Text::countCharacters(text), Text::countCharacters(longText) * 3);
    }
}

/// Nobody listens on any port.
class NoEngineCleanerTest : public EngineTest {};

TEST_F(NoEngineCleanerTest, WithoutAnyEngineTheRawTextComesBackAtOnce) {
    EXPECT_EQ(Cleaner::clean(longText), longText);
}

TEST_F(NoEngineCleanerTest, AMissingProgramOrModelEndsInTheRawText) {
    installLlama({{QStringLiteral("exitAtStart"), 1}});
    hurry();
    EXPECT_EQ(Cleaner::clean(longText), longText) << "the program ends at once";
    QFile::remove(folder.filePath(llamaModelName(QStringLiteral("light"))));
    EXPECT_EQ(Cleaner::clean(longText), longText) << "its model is missing";
    platform.bundle().resources.clear();
    EXPECT_EQ(Cleaner::clean(longText), longText) << "it is missing itself";
    LlamaRunner::shutdown();
}

}  // namespace
}  // namespace parlivo
