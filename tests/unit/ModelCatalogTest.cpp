// SPDX-License-Identifier: MIT
#include "models/ModelCatalog.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"

#include <QDir>
#include <QFile>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

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

struct ExpectedEntry {
    QString id;
    QString label;
    QString detail;
    QString fileName;
    QString urlPath;  ///< without the file's name
    qint64 size;
};

void expectTable(const std::vector<ModelCatalog::Entry>& table, const std::vector<ExpectedEntry>& expected) {
    ASSERT_EQ(table.size(), expected.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
        EXPECT_EQ(table[i].id, expected[i].id);
        EXPECT_EQ(table[i].label, expected[i].label);
        EXPECT_EQ(table[i].detail, expected[i].detail);
        EXPECT_EQ(table[i].fileName, expected[i].fileName);
        EXPECT_EQ(table[i].url.path(), expected[i].urlPath + expected[i].fileName);
        EXPECT_EQ(table[i].expectedSize, expected[i].size);
    }
}

TEST_F(ModelCatalogTest, TheTablesAreExact) {
    expectTable(
        ModelCatalog::asrTiers(),
        {{u"fast"_s, u"Veloce"_s, u"Whisper turbo q5 · 574 MB · ottimo, più leggero"_s,
          u"ggml-large-v3-turbo-q5_0.bin"_s, u"/ggerganov/whisper.cpp/resolve/main/"_s, 574'041'195},
         {u"best"_s, u"Precisa"_s, u"Whisper turbo q8 · 834 MB · massima accuratezza (consigliata)"_s,
          u"ggml-large-v3-turbo-q8_0.bin"_s, u"/ggerganov/whisper.cpp/resolve/main/"_s, 874'188'075}});
    expectTable(
        ModelCatalog::cleanupTiers(),
        {{u"none"_s,
          u"Nessuna"_s,
          u"Solo Whisper · 0 MB · punteggiatura base, nessun download"_s,
          {},
          Config::siteBase().path(),
          0},
         {u"light"_s, u"Leggera"_s, u"Qwen 2.5 1.5B · 1.1 GB · filler e punteggiatura, veloce"_s,
          u"qwen2.5-1.5b-instruct-q4_k_m.gguf"_s, u"/Qwen/Qwen2.5-1.5B-Instruct-GGUF/resolve/main/"_s,
          1'117'320'736},
         {u"full"_s, u"Completa"_s, u"Gemma 3 4B · 2.5 GB · qualità massima (consigliata)"_s,
          u"gemma-3-4b-it-Q4_K_M.gguf"_s, u"/ggml-org/gemma-3-4b-it-GGUF/resolve/main/"_s, 2'489'757'856}});
    EXPECT_EQ(ModelCatalog::cleanupTiers()[0].url, Config::siteBase());
    EXPECT_EQ(ModelCatalog::asrTiers()[0].url.host(), ModelCatalog::cleanupTiers()[2].url.host());
}

}  // namespace
}  // namespace parlivo
