// SPDX-License-Identifier: MIT
#include "DownloaderFixture.h"
#include "support/FileSizeLimit.h"

namespace parlivo {
namespace {

using namespace downloads;
using Manner = StubReply::Manner;

class DownloaderDiskTest : public DownloaderTest {};

TEST_F(DownloaderDiskTest, TheFolderIsMadeWithAllAboveIt) {
    store(Settings::modelsDir, platform.directories().temporary() + u"/a/b c/modelli"_s);
    server.on(path, whole());
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderDiskTest, WhatLiesInItsPlaceIsDeletedAtTheStart) {
    QDir().mkpath(Config::modelsDir());
    ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, file()));
    server.on(path, StubReply::of(Manner::Never));
    start(entry());
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(DownloaderDiskTest, ABodyOfUnknownSizeMayFillTheDiskAndNothingIsLeft) {
    server.on(path, StubReply{"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}});
    EXPECT_FALSE(fetch(entry(0)));
    EXPECT_EQ(failure(), fileName + u": spazio su disco esaurito"_s);
    EXPECT_EQ(logged(), QStringList({u"download avviato: "_s + fileName,
                                     u"errore salvataggio "_s + fileName + u": "_s + failure()}))
        << "no second try";
    expectNothingLeft();
}

TEST_F(DownloaderDiskTest, AFullDiskIsTold) {
    constexpr qint64 large = 12 << 20;  // the disk here holds 8 MiB
    server.on(path, whole(makeModel(large)));
    for (const qint64 expected : {large, qint64{0}}) {
        ends.clear();
        EXPECT_FALSE(fetch(entry(expected)));
        EXPECT_EQ(failure(), fileName + u": spazio su disco esaurito"_s);
        EXPECT_TRUE(progress.empty()) << "before the first byte";
        expectNothingLeft();
    }
    EXPECT_EQ(server.requests(path).size(), 2U) << "one for each";
}

TEST_F(DownloaderDiskTest, AFileTooLargeForTheDiskIsTold) {
    server.on(path, whole());
    const FileSizeLimit small(1 << 20);
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": file troppo grande per questo disco"_s);
    expectNothingLeft();
}

TEST_F(DownloaderDiskTest, AFolderThatCannotBeMadeIsTold) {
    const QString inTheWay = platform.directories().temporary() + u"/file"_s;
    ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, inTheWay));
    store(Settings::modelsDir, QString(inTheWay + u"/modelli"_s));
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": la posizione non è una cartella"_s);
    EXPECT_EQ(server.requests(path).size(), 1U) << "trying again would not help";
}

TEST_F(DownloaderDiskTest, AFolderThatCannotBeWrittenIsTold) {
    // Not even root writes there; to others a folder of the system's is closed as well.
    store(Settings::modelsDir, u"/proc/self/task"_s);
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_TRUE(failure().startsWith(fileName + u": "_s)) << failure().toStdString();
    EXPECT_EQ(ends.back()->domain(), u"POSIX"_s);
    EXPECT_EQ(logged().last(), u"errore salvataggio "_s + fileName + u": "_s + failure());
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
}

TEST_F(DownloaderDiskTest, AFolderInTheFilesPlaceStaysAndIsTold) {
    QDir().mkpath(file() + u"/dentro"_s);
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": al suo posto c'è una cartella"_s);
    EXPECT_EQ(filesIn(Config::modelsDir()), QStringList(fileName));
    EXPECT_EQ(filesIn(file()), QStringList(u"dentro"_s));
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
}

TEST_F(DownloaderDiskTest, TwoAtATimeDoNotMix) {
    // The one waits in the middle of its file while the other begins and ends.
    StubReply half = cutAt(50 * percent);
    half.manner = Manner::ThenNothing;
    Clock::setScale(1);
    server.on(path, {half, whole()});
    start(entry());
    ASSERT_TRUE(desktop::waitFor([this] { return !progress.empty(); }));
    Downloader second(entry());
    bool done = false;
    second.onCompletion = [&](const auto& error) { done = !error; };
    second.start();
    EXPECT_TRUE(desktop::waitFor([&] { return done; }));
    EXPECT_TRUE(contents() == model());
    downloader.reset();
    EXPECT_TRUE(desktop::waitFor([] { return filesIn(Config::modelsDir()) == QStringList(fileName); }));
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderDiskTest, WhatAKilledProgramLeftIsCleanedAway) {
    const QDir models(Config::modelsDir());
    QDir().mkpath(models.path());
    for (const QString& name : {u"a.bin"_s, u"note.txt"_s, u"a.bin.1234.parlivo-download"_s})
        ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, models.filePath(name)));
    QDir().mkpath(models.filePath(u"cartella.parlivo-download"_s));
    Downloader::removeStaleFiles();
    EXPECT_EQ(filesIn(models.path()),
              QStringList({u"a.bin"_s, u"cartella.parlivo-download"_s, u"note.txt"_s}));
}

}  // namespace
}  // namespace parlivo
