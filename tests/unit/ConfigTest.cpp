// SPDX-License-Identifier: MIT
#include "models/ModelCatalog.h"
#include "models/ModelPaths.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"

#include <QDir>
#include <QFile>
#include <QTimeZone>

#include <cmath>
#include <limits>

namespace parlivo {
namespace {

using Settings::asrTier;
using Settings::cleanupTier;

class ConfigTest : public PlatformTest {
  protected:
    static QString support() { return fake::Directories::root() + QStringLiteral("/support/Parlivo"); }
    static QString home() { return fake::Directories::root() + QStringLiteral("/home"); }

    /// A file of the given size that takes no room on disk.
    static void makeFile(const QString& path, qint64 size) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(size));
    }
};

TEST_F(ConfigTest, ABooleanThatWasNeverWrittenTakesItsDefault) {
    EXPECT_TRUE(Config::get(Settings::soundsEnabled));
    EXPECT_FALSE(Config::get(Settings::debugMode));
}

TEST_F(ConfigTest, AStoredFalseIsNotAbsent) {
    store(Settings::soundsEnabled, false);
    EXPECT_FALSE(Config::get(Settings::soundsEnabled));
}

TEST_F(ConfigTest, ABooleanOfAnotherTypeIsReadAsTheStoreReadsIt) {
    const std::vector<std::pair<QVariant, bool>> cases = {
        {1, true},
        {0, false},
        {2.5, true},
        {QStringLiteral("YES"), true},
        {QStringLiteral("true"), true},
        {QStringLiteral("1"), true},
        {QStringLiteral("no"), false},
        {QStringLiteral("boh"), false},
        {QVariantList{true}, false},
        {QVariantMap{{QStringLiteral("a"), 1}}, false},
    };
    for (const auto& [stored, expected] : cases) {
        store(Settings::overlayEnabled, stored);
        EXPECT_EQ(Config::boolean(Settings::overlayEnabled.key, !expected), expected)
            << stored.toString().toStdString();
    }
}

TEST_F(ConfigTest, AStoredNullIsAbsent) {
    store(Settings::soundsEnabled, QVariant::fromValue(nullptr));
    store(Settings::cleanupMinChars, QVariant::fromValue(nullptr));
    EXPECT_TRUE(Config::get(Settings::soundsEnabled));
    EXPECT_EQ(Config::get(Settings::cleanupMinChars), 50);
}

TEST_F(ConfigTest, ATextOfAnotherTypeIsAbsent) {
    for (const QVariant& wrong : {QVariant(7), QVariant(true), QVariant(1.5), QVariant(QVariantList{1})}) {
        store(Settings::language, wrong);
        EXPECT_EQ(Config::get(Settings::language), QStringLiteral("it"));
        store(Settings::pendingChangelog, wrong);
        EXPECT_EQ(Config::get(Settings::pendingChangelog), std::nullopt);
    }
}

TEST_F(ConfigTest, AnEmptyModelsDirIsAbsent) {
    store(Settings::modelsDir, QString());
    EXPECT_EQ(Config::modelsDir(), support() + QStringLiteral("/models"));
    store(Settings::modelsDir, QStringLiteral("/srv/modelli"));
    EXPECT_EQ(Config::modelsDir(), QStringLiteral("/srv/modelli"));
}

TEST_F(ConfigTest, TheDictionaryHoldsTheTrimmedLinesThatAreNotEmpty) {
    store(Settings::dictionary, QStringLiteral("  Foo \n\n\tBar\n"));
    EXPECT_EQ(Config::dictionary(), QStringList({QStringLiteral("Foo"), QStringLiteral("Bar")}));
}

TEST_F(ConfigTest, TheDictionaryKnowsEveryLineEndAndKeepsDuplicates) {
    store(Settings::dictionary, QStringLiteral("a b\r\nc\u2028d\u0085a b\u2029e\u000bf"));
    EXPECT_EQ(Config::dictionary().join(QLatin1Char('|')), QStringLiteral("a b|c|d|a b|e|f"));
}

TEST_F(ConfigTest, HalfACharacterInTheDictionaryChangesItsOwnTermOnly) {
    const QString half = QStringLiteral("Ross") + QChar(0xd800) + QLatin1Char('i');
    store(Settings::dictionary,
          QString(QStringLiteral("Kubernetes\n ") + half + QStringLiteral(" \nGiulia")));
    EXPECT_EQ(Config::dictionary(),
              QStringList({QStringLiteral("Kubernetes"), half, QStringLiteral("Giulia")}));
}

TEST_F(ConfigTest, ADictionaryOfTenThousandTermsIsReadWhole) {
    QString terms;
    for (int i = 0; i < 10'000; ++i) terms += QStringLiteral("Termine%1\n").arg(i);
    store(Settings::dictionary, terms);
    const QStringList read = Config::dictionary();
    ASSERT_EQ(read.size(), 10'000);
    EXPECT_EQ(read.last(), QStringLiteral("Termine9999"));
}

TEST_F(ConfigTest, AStoredZeroOfCleanupMinCharsStaysZero) {
    EXPECT_EQ(Config::get(Settings::cleanupMinChars), 50);
    store(Settings::cleanupMinChars, 0);
    EXPECT_EQ(Config::get(Settings::cleanupMinChars), 0);
}

TEST_F(ConfigTest, AnIntegerIsAWholeNumberOrATextThatIsOne) {
    const std::vector<std::pair<QVariant, qint64>> cases = {
        {7, 7},
        {-7, -7},
        {7.0, 7},
        {1e15, 1'000'000'000'000'000},
        {QStringLiteral("7"), 7},
        {-9223372036854775808.0, std::numeric_limits<qint64>::min()}};
    for (const auto& [stored, expected] : cases) {
        store(Settings::cleanupMinChars, stored);
        EXPECT_EQ(Config::get(Settings::cleanupMinChars), expected) << stored.toString().toStdString();
    }
}

TEST_F(ConfigTest, WhatIsNoIntegerCountsAsAbsent) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const QVariant& wrong :
         {QVariant(3.7), QVariant(-0.5), QVariant(1e300), QVariant(-1e300), QVariant(9223372036854775808.0),
          QVariant(infinity), QVariant(std::nan("")), QVariant(QStringLiteral("7.9")),
          QVariant(QStringLiteral("sette")), QVariant(QStringLiteral("0x10")), QVariant(QString()),
          QVariant(QStringLiteral("99999999999999999999")), QVariant(true), QVariant(QVariantList{}),
          QVariant(QVariantMap{{QStringLiteral("a"), 1}})}) {
        store(Settings::cleanupMinChars, wrong);
        EXPECT_EQ(Config::get(Settings::cleanupMinChars), 50) << wrong.toString().toStdString();
    }
}

TEST_F(ConfigTest, AWordIsReadByItsExactSpelling) {
    EXPECT_EQ(Config::get(Settings::typingSpeed), TypingSpeed::Fast);
    store(Settings::typingSpeed, QStringLiteral("natural"));
    EXPECT_EQ(Config::get(Settings::typingSpeed), TypingSpeed::Natural);
    for (const QVariant& other :
         {QVariant(QStringLiteral("Natural")), QVariant(QStringLiteral("natural ")), QVariant(QString()),
          QVariant(QStringLiteral("boh")), QVariant(0), QVariant(true)}) {
        store(Settings::typingSpeed, other);
        EXPECT_EQ(Config::get(Settings::typingSpeed), TypingSpeed::Fast) << other.toString().toStdString();
    }
}

TEST_F(ConfigTest, AnUnknownDictationModeIsNotTheDefaultOne) {
    EXPECT_EQ(Config::get(Settings::dictationMode), DictationMode::PushToTalk);
    store(Settings::dictationMode, 1);
    EXPECT_EQ(Config::get(Settings::dictationMode), DictationMode::PushToTalk) << "no text, so absent";
    store(Settings::dictationMode, QStringLiteral("hold"));
    EXPECT_EQ(Config::get(Settings::dictationMode), DictationMode::Unknown);
}

TEST_F(ConfigTest, ADateIsKeptInUtcAndAnythingElseIsNoDate) {
    EXPECT_EQ(Config::get(Settings::feedbackPromptLastShown), std::nullopt);
    const QDateTime moment(QDate(2026, 3, 1), QTime(12, 30, 15, 250), QTimeZone::utc());
    Config::set(Settings::feedbackPromptLastShown, moment);
    EXPECT_EQ(Config::get(Settings::feedbackPromptLastShown), moment);
    EXPECT_EQ(stored(Settings::feedbackPromptLastShown), moment.toUTC());
    store(Settings::feedbackPromptLastShown, QStringLiteral("2026-03-01T12:30:15.250Z"));
    EXPECT_EQ(Config::get(Settings::feedbackPromptLastShown), moment) << "from a store without dates";
    for (const QVariant& wrong : {QVariant(QStringLiteral("ieri")), QVariant(12), QVariant(true)}) {
        store(Settings::feedbackPromptLastShown, wrong);
        EXPECT_EQ(Config::get(Settings::feedbackPromptLastShown), std::nullopt);
    }
}

TEST_F(ConfigTest, ABundleWithoutAVersionIsVersionZero) {
    EXPECT_EQ(Config::appVersion(), QStringLiteral("1.2.3"));
    platform.bundle().version = std::nullopt;
    EXPECT_EQ(Config::appVersion(), QStringLiteral("0.0.0"));
}

/// An environment variable until the end of the scope.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) { qputenv(name, value); }
    ~Variable() { qunsetenv(name_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
};

TEST_F(ConfigTest, ASlashAtTheEndOfAnAddressIsTakenOff) {
    EXPECT_EQ(Config::addressProblem(), std::nullopt) << "what is built in";
    const Variable site("PARLIVO_SITE_BASE", "http://127.0.0.1:8000/parlivo//");
    const Variable host("PARLIVO_MODEL_HOST", "https://modelli.example/");
    EXPECT_EQ(Config::addressProblem(), std::nullopt);
    EXPECT_EQ(Config::siteBase(), QUrl(QStringLiteral("http://127.0.0.1:8000/parlivo")));
    EXPECT_EQ(Config::modelHost(), QUrl(QStringLiteral("https://modelli.example")));
}

TEST_F(ConfigTest, WhatIsNoAddressIsRefusedByItsName) {
    for (const char* name : {"PARLIVO_SITE_BASE", "PARLIVO_MODEL_HOST"}) {
        for (const char* wrong :
             {"", "/", "parlivo.example", "www.parlivo.example/x", "//parlivo.example", "http://",
              "https:///x", "file:///srv", "ftp://parlivo.example", "http//x", "http://a b"}) {
            const Variable variable(name, wrong);
            const QString expected = QStringLiteral("%1 non è un indirizzo http o https: «%2»")
                                         .arg(QString::fromLatin1(name), QString::fromLatin1(wrong));
            EXPECT_EQ(Config::addressProblem(), expected);
        }
    }
}

TEST_F(ConfigTest, EnginesComeFromTheBundleElseFromTheDevelopersFolder) {
    EXPECT_EQ(Config::whisperServer(),
              home() + QStringLiteral("/Projects/Parlivo/whisper.cpp/build/bin/whisper-server"));
    EXPECT_EQ(Config::llamaServerBinary(),
              home() + QStringLiteral("/Projects/Parlivo/llama.cpp/build/bin/llama-server"));
    platform.bundle().resources[QStringLiteral("whisper-server")] = QStringLiteral("/b/whisper-server");
    platform.bundle().resources[QStringLiteral("llama-server")] = QStringLiteral("/b/llama-server");
    EXPECT_EQ(Config::whisperServer(), QStringLiteral("/b/whisper-server"));
    EXPECT_EQ(Config::llamaServerBinary(), QStringLiteral("/b/llama-server"));
}

TEST_F(ConfigTest, WithoutACleanupTierThereIsNoCleanupModelEvenIfFilesAreThere) {
    makeFile(support() + QStringLiteral("/models/gemma-3-4b-it-Q4_K_M.gguf"), 10);
    EXPECT_EQ(Config::llamaModel(), std::nullopt);
    store(cleanupTier, QStringLiteral("none"));
    EXPECT_EQ(Config::llamaModel(), std::nullopt);
    store(cleanupTier, QStringLiteral("full"));
    EXPECT_EQ(Config::llamaModel(), support() + QStringLiteral("/models/gemma-3-4b-it-Q4_K_M.gguf"));
}

TEST_F(ConfigTest, TheCleanupModelIsNamedEvenWhenItsFileIsMissing) {
    store(cleanupTier, QStringLiteral("light"));
    EXPECT_EQ(Config::llamaModel(), support() + QStringLiteral("/models/qwen2.5-1.5b-instruct-q4_k_m.gguf"));
}

TEST_F(ConfigTest, TheRecognitionModelIsTheChosenTierWhenItIsWhole) {
    const QString fast = support() + QStringLiteral("/models/ggml-large-v3-turbo-q5_0.bin");
    makeFile(fast, 574'041'195);
    store(asrTier, QStringLiteral("fast"));
    EXPECT_EQ(Config::whisperModel(), fast);
    EXPECT_TRUE(Config::hasUsableModel());
}

TEST_F(ConfigTest, ARecognitionModelOneByteShortFallsBackToTheBundle) {
    makeFile(support() + QStringLiteral("/models/ggml-large-v3-turbo-q8_0.bin"), 874'188'074);
    EXPECT_FALSE(Config::hasUsableModel());
    platform.bundle().resources[QStringLiteral("ggml-model.bin")] = QStringLiteral("/bin/sh");
    EXPECT_EQ(Config::whisperModel(), QStringLiteral("/bin/sh"));
    EXPECT_TRUE(Config::hasUsableModel());
}

TEST_F(ConfigTest, UntilItsFileIsThereTheTierBeforeStaysInUse) {
    const QString fast = support() + QStringLiteral("/models/ggml-large-v3-turbo-q5_0.bin");
    makeFile(fast, 574'041'195);
    store(asrTier, QStringLiteral("best"));
    EXPECT_EQ(Config::recogniserInUse(), fast);
    const QString best = support() + QStringLiteral("/models/ggml-large-v3-turbo-q8_0.bin");
    makeFile(best, 874'188'074);
    EXPECT_EQ(Config::recogniserInUse(), fast) << "one byte is missing";
    makeFile(best, 874'188'075);
    EXPECT_EQ(Config::recogniserInUse(), best);
}

TEST_F(ConfigTest, TheBundlesModelComesBeforeAnotherTiers) {
    makeFile(support() + QStringLiteral("/models/ggml-large-v3-turbo-q5_0.bin"), 574'041'195);
    platform.bundle().resources[QStringLiteral("ggml-model.bin")] = QStringLiteral("/bin/sh");
    EXPECT_EQ(Config::recogniserInUse(), QStringLiteral("/bin/sh"));
}

TEST_F(ConfigTest, ACleanupTierWithoutItsFileLeavesTheOneBeforeInUse) {
    const auto light = ModelCatalog::cleanupTier(QStringLiteral("light"));
    const QString lightFile = support() + QStringLiteral("/models/") + light.fileName;
    store(cleanupTier, QStringLiteral("full"));
    const auto full = Config::llamaModel();
    EXPECT_EQ(Config::cleanerInUse(), full) << "there is no other";
    makeFile(lightFile, light.expectedSize);
    EXPECT_EQ(Config::cleanerInUse(), lightFile);
    store(cleanupTier, QStringLiteral("none"));
    EXPECT_EQ(Config::cleanerInUse(), std::nullopt);
}

TEST_F(ConfigTest, TheDevelopersModelIsTheLastResort) {
    const QString model = home() + QStringLiteral("/Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin");
    EXPECT_EQ(Config::whisperModel(), model);
    EXPECT_FALSE(Config::hasUsableModel());
    makeFile(model, 1);
    EXPECT_TRUE(Config::hasUsableModel());
}

TEST_F(ConfigTest, ALargestIntegerSurvivesReading) {
    store(Settings::dictationCount, std::numeric_limits<qint64>::max());
    EXPECT_EQ(Config::get(Settings::dictationCount), std::numeric_limits<qint64>::max());
}

}  // namespace
}  // namespace parlivo
