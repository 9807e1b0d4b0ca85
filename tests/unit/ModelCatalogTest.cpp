#include "models/ModelCatalog.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"

#include <QDir>
#include <QFile>

namespace parlivo {
namespace {

class ModelCatalogTest : public PlatformTest {
  protected:
    static void makeModel(const ModelCatalog::Entry& entry, qint64 size) {
        QDir().mkpath(Config::modelsDir());
        QFile file(Config::modelsDir() + QLatin1Char('/') + entry.fileName);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(size));
    }
};

TEST_F(ModelCatalogTest, AnUnknownRecognitionTierMeansTheRecommendedOne) {
    for (const char* id : {"", "Best", "boh"}) {
        EXPECT_EQ(ModelCatalog::asrTier(QString::fromLatin1(id)).id, QStringLiteral("best"));
    }
    EXPECT_EQ(ModelCatalog::asrTier(QStringLiteral("fast")).id, QStringLiteral("fast"));
}

TEST_F(ModelCatalogTest, AnUnknownCleanupTierMeansNone) {
    for (const char* id : {"", "FULL", "boh"}) {
        EXPECT_EQ(ModelCatalog::cleanupTier(QString::fromLatin1(id)).id, QStringLiteral("none"));
    }
    EXPECT_EQ(ModelCatalog::cleanupTier(QStringLiteral("light")).id, QStringLiteral("light"));
}

TEST_F(ModelCatalogTest, TheTierWithoutAFileCountsAsDownloadedWithoutAnyFolder) {
    store(Settings::modelsDir, QStringLiteral("/non/esiste"));
    EXPECT_TRUE(ModelCatalog::isDownloaded(ModelCatalog::cleanupTier(QStringLiteral("none"))));
    EXPECT_FALSE(ModelCatalog::isDownloaded(ModelCatalog::asrTier(QStringLiteral("best"))));
}

TEST_F(ModelCatalogTest, OnlyTheExactSizeCounts) {
    for (const auto& entry :
         {ModelCatalog::asrTier(QStringLiteral("fast")), ModelCatalog::asrTier(QStringLiteral("best")),
          ModelCatalog::cleanupTier(QStringLiteral("light")),
          ModelCatalog::cleanupTier(QStringLiteral("full"))}) {
        makeModel(entry, entry.expectedSize - 1);
        EXPECT_FALSE(ModelCatalog::isDownloaded(entry)) << "one byte short";
        makeModel(entry, entry.expectedSize + 1);
        EXPECT_FALSE(ModelCatalog::isDownloaded(entry)) << "one byte long";
        makeModel(entry, entry.expectedSize);
        EXPECT_TRUE(ModelCatalog::isDownloaded(entry));
    }
}

TEST_F(ModelCatalogTest, AFileOfUnknownSizeMustBePlausiblyLarge) {
    ModelCatalog::Entry entry;
    entry.fileName = QStringLiteral("ignoto.bin");
    makeModel(entry, 100'000'000);
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry));
    makeModel(entry, 100'000'001);
    EXPECT_TRUE(ModelCatalog::isDownloaded(entry));
}

TEST_F(ModelCatalogTest, AFolderOfTheModelsNameIsNoModel) {
    ModelCatalog::Entry entry;
    entry.fileName = QStringLiteral("cartella.bin");
    QDir().mkpath(Config::modelsDir() + QStringLiteral("/cartella.bin"));
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry));
}

TEST_F(ModelCatalogTest, TheTablesAreWhatTheUserSees) {
    ASSERT_EQ(ModelCatalog::asrTiers().size(), 2U);
    ASSERT_EQ(ModelCatalog::cleanupTiers().size(), 3U);
    const auto& fast = ModelCatalog::asrTiers()[0];
    EXPECT_EQ(fast.label, QStringLiteral("Veloce"));
    EXPECT_EQ(fast.detail, QStringLiteral("Whisper turbo q5 · 574 MB · ottimo, più leggero"));
    EXPECT_TRUE(fast.url.path().endsWith(QStringLiteral("/resolve/main/ggml-large-v3-turbo-q5_0.bin")));
    const auto& full = ModelCatalog::cleanupTiers()[2];
    EXPECT_EQ(full.detail, QStringLiteral("Gemma 3 4B · 2.5 GB · qualità massima (consigliata)"));
    EXPECT_EQ(full.url.path(),
              QStringLiteral("/ggml-org/gemma-3-4b-it-GGUF/resolve/main/gemma-3-4b-it-Q4_K_M.gguf"));
    EXPECT_EQ(full.expectedSize, 2'489'757'856);
}

}  // namespace
}  // namespace parlivo
