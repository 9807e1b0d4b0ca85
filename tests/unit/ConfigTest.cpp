#include "models/ModelCatalog.h"
#include "models/ModelPaths.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"

#include <QDir>
#include <QFile>

#include <limits>

namespace parlivo {
namespace {

using Config::Key::asrTier;
using Config::Key::cleanupTier;

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
    EXPECT_TRUE(Config::boolean(Config::Key::soundsEnabled, true));
    EXPECT_FALSE(Config::boolean(Config::Key::debugMode, false));
}

TEST_F(ConfigTest, AStoredFalseIsNotAbsent) {
    store(Config::Key::soundsEnabled, false);
    EXPECT_FALSE(Config::boolean(Config::Key::soundsEnabled, true));
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
        store(Config::Key::overlayEnabled, stored);
        EXPECT_EQ(Config::boolean(Config::Key::overlayEnabled, !expected), expected)
            << stored.toString().toStdString();
    }
}

TEST_F(ConfigTest, AStoredNullIsAbsent) {
    store(Config::Key::soundsEnabled, QVariant::fromValue(nullptr));
    store(Config::Key::cleanupMinChars, QVariant::fromValue(nullptr));
    EXPECT_TRUE(Config::boolean(Config::Key::soundsEnabled, true));
    EXPECT_EQ(Config::cleanupMinChars(), 50);
}

TEST_F(ConfigTest, ATextOfAnotherTypeIsAbsent) {
    for (const QVariant& wrong : {QVariant(7), QVariant(true), QVariant(1.5), QVariant(QVariantList{1})}) {
        store(Config::Key::language, wrong);
        EXPECT_EQ(Config::string(Config::Key::language), std::nullopt);
        EXPECT_EQ(Config::string(Config::Key::language, QStringLiteral("it")), QStringLiteral("it"));
    }
}

TEST_F(ConfigTest, AnEmptyModelsDirIsAbsent) {
    store(Config::Key::modelsDir, QString());
    EXPECT_EQ(Config::modelsDir(), support() + QStringLiteral("/models"));
    store(Config::Key::modelsDir, QStringLiteral("/srv/modelli"));
    EXPECT_EQ(Config::modelsDir(), QStringLiteral("/srv/modelli"));
}

TEST_F(ConfigTest, TheDictionaryHoldsTheTrimmedLinesThatAreNotEmpty) {
    store(Config::Key::dictionary, QStringLiteral("  Foo \n\n\tBar\n"));
    EXPECT_EQ(Config::dictionary(), QStringList({QStringLiteral("Foo"), QStringLiteral("Bar")}));
}

TEST_F(ConfigTest, TheDictionaryKnowsEveryLineEndAndKeepsDuplicates) {
    store(Config::Key::dictionary, QStringLiteral("a b\r\nc\u2028d\u0085a b\u2029e\u000bf"));
    EXPECT_EQ(Config::dictionary().join(QLatin1Char('|')), QStringLiteral("a b|c|d|a b|e|f"));
}

TEST_F(ConfigTest, HalfACharacterInTheDictionarySpoilsItsOwnTermAlone) {
    const QString half = QStringLiteral("Ross") + QChar(0xd800) + QLatin1Char('i');
    store(Config::Key::dictionary,
          QString(QStringLiteral("Kubernetes\n ") + half + QStringLiteral(" \nGiulia")));
    EXPECT_EQ(Config::dictionary(),
              QStringList({QStringLiteral("Kubernetes"), half, QStringLiteral("Giulia")}));
}

TEST_F(ConfigTest, ADictionaryOfTenThousandTermsIsReadWhole) {
    QString terms;
    for (int i = 0; i < 10'000; ++i) terms += QStringLiteral("Termine%1\n").arg(i);
    store(Config::Key::dictionary, terms);
    const QStringList read = Config::dictionary();
    ASSERT_EQ(read.size(), 10'000);
    EXPECT_EQ(read.last(), QStringLiteral("Termine9999"));
}

TEST_F(ConfigTest, AStoredZeroOfCleanupMinCharsStaysZero) {
    EXPECT_EQ(Config::cleanupMinChars(), 50);
    store(Config::Key::cleanupMinChars, 0);
    EXPECT_EQ(Config::cleanupMinChars(), 0);
    store(Config::Key::cleanupMinChars, QVariantList{});
    EXPECT_EQ(Config::cleanupMinChars(), 0) << "present, but no number";
}

TEST_F(ConfigTest, ADateIsKeptInUtcAndAnythingElseIsNoDate) {
    EXPECT_EQ(Config::feedbackPromptLastShown(), std::nullopt);
    const QDateTime moment(QDate(2026, 3, 1), QTime(12, 30, 15, 250), Qt::UTC);
    Config::setFeedbackPromptLastShown(moment);
    EXPECT_EQ(Config::feedbackPromptLastShown(), moment);
    EXPECT_EQ(Config::string(Config::Key::feedbackPromptLastShown),
              QStringLiteral("2026-03-01T12:30:15.250Z"));
    for (const QVariant& wrong : {QVariant(QStringLiteral("ieri")), QVariant(12), QVariant(true)}) {
        store(Config::Key::feedbackPromptLastShown, wrong);
        EXPECT_EQ(Config::feedbackPromptLastShown(), std::nullopt);
    }
}

TEST_F(ConfigTest, ABundleWithoutAVersionIsVersionZero) {
    EXPECT_EQ(Config::appVersion(), QStringLiteral("1.2.3"));
    platform.bundle().version = std::nullopt;
    EXPECT_EQ(Config::appVersion(), QStringLiteral("0.0.0"));
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

TEST_F(ConfigTest, TheDevelopersModelIsTheLastResort) {
    const QString model = home() + QStringLiteral("/Projects/Parlivo/models/ggml-large-v3-turbo-q8_0.bin");
    EXPECT_EQ(Config::whisperModel(), model);
    EXPECT_FALSE(Config::hasUsableModel());
    makeFile(model, 1);
    EXPECT_TRUE(Config::hasUsableModel());
}

TEST_F(ConfigTest, ALargestIntegerSurvivesReading) {
    store(Config::Key::dictationCount, std::numeric_limits<qint64>::max());
    EXPECT_EQ(Config::integer(Config::Key::dictationCount, 0), std::numeric_limits<qint64>::max());
}

}  // namespace
}  // namespace parlivo
