#include "models/ModelsFolder.h"
#include "support/PlatformTest.h"
#include "support/Waiting.h"

#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;
using ModelsFolder::moveModels;

/// Moves from one disk to another; TMPDIR is a small one here (8 MiB).
class ModelsFolderDiskTest : public PlatformTest {
  protected:
    QString from(const QString& name) const { return from_.filePath(name); }
    QString to(const QString& name) const { return to_.filePath(name); }
    QString small(const QString& name) const { return small_.filePath(name); }

    static QByteArray model(qint64 size) { return QByteArray(size, 'm'); }
    static void write(const QString& path, const QByteArray& contents) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(contents), contents.size());
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    static QStringList files(const QString& folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    const QTemporaryDir from_{u"/dev/shm/parlivo-XXXXXX"_s};
    const QTemporaryDir to_{u"/tmp/parlivo-XXXXXX"_s};
    const QTemporaryDir small_;
};

TEST_F(ModelsFolderDiskTest, WhatDoesNotFitStaysAndTheRestMoves) {
    write(from(u"a.bin"_s), model(12 << 20));
    write(from(u"b.gguf"_s), model(1 << 20));
    moveModels(from_.path(), small_.path());
    EXPECT_TRUE(read(from(u"a.bin"_s)) == model(12 << 20));
    EXPECT_EQ(files(from_.path()), QStringList(u"a.bin"_s));
    EXPECT_TRUE(read(small(u"b.gguf"_s)) == model(1 << 20));
    EXPECT_EQ(files(small_.path()), QStringList(u"b.gguf"_s)) << "no half file is left";
}

TEST_F(ModelsFolderDiskTest, AFileOfThatNameIsNeverOverwritten) {
    write(from(u"a.bin"_s), "mine");
    write(to(u"a.bin"_s), "there");
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(read(from(u"a.bin"_s)), "mine");
    EXPECT_EQ(read(to(u"a.bin"_s)), "there");
}

TEST_F(ModelsFolderDiskTest, AFolderWithAModelsNameStays) {
    QDir().mkpath(from(u"cartella.bin/dentro"_s));
    write(from(u"b.gguf"_s), "b");
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(files(from(u"cartella.bin"_s)), QStringList(u"dentro"_s));
    EXPECT_EQ(files(to_.path()), QStringList(u"b.gguf"_s));
}

TEST_F(ModelsFolderDiskTest, AProgramKilledInMidMoveLosesNothing) {
    const QByteArray contents = model(64 << 20);
    write(from(u"a.bin"_s), contents);
    const pid_t mover = fork();
    ASSERT_GE(mover, 0);
    if (mover == 0) {
        moveModels(from_.path(), to_.path());
        _exit(0);
    }
    EXPECT_TRUE(desktop::waitFor([&] { return !files(to_.path()).isEmpty(); }));
    kill(mover, SIGKILL);
    waitpid(mover, nullptr, 0);
    EXPECT_TRUE(read(from(u"a.bin"_s)) == contents || read(to(u"a.bin"_s)) == contents);
    EXPECT_TRUE(!QFile::exists(to(u"a.bin"_s)) || read(to(u"a.bin"_s)) == contents);
    moveModels(from_.path(), to_.path());
    EXPECT_TRUE(read(to(u"a.bin"_s)) == contents) << "another try brings it there";
    EXPECT_EQ(files(to_.path()), QStringList(u"a.bin"_s));
}

}  // namespace
}  // namespace parlivo
