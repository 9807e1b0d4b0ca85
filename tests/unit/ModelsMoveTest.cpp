// SPDX-License-Identifier: MIT
#include "models/ModelsMove.h"
#include "support/FileSizeLimit.h"
#include "support/PlatformTest.h"

#include <QTemporaryDir>

#include <sys/stat.h>

namespace parlivo {
namespace {

/// With the new folder adopted at once.
void moveModels(const QString& from, const QString& to) {
    ModelsMove move(from, to);
    move.stage();
    move.commit();
}

class ModelsMoveTest : public PlatformTest {
  protected:
    ModelsMoveTest() {
        QDir().mkpath(from());
        QDir().mkpath(to());
    }

    QString from() const { return here_.filePath(QStringLiteral("da")); }
    QString to() const { return here_.filePath(QStringLiteral("a")); }

    static void write(const QString& path, const QByteArray& contents) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    static QStringList files(const QString& folder) {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::Dirs | QDir::NoDotAndDotDot);
    }
    /// A folder on another file system than the temporary one, or nothing when this machine has none.
    static QString otherFileSystem() {
        struct stat here = {};
        struct stat there = {};
        if (stat(qPrintable(QDir::tempPath()), &here) != 0 || stat("/dev/shm", &there) != 0) return {};
        return here.st_dev == there.st_dev ? QString() : QStringLiteral("/dev/shm");
    }

  private:
    QTemporaryDir here_;
};

TEST_F(ModelsMoveTest, OnlyModelFilesMove) {
    for (const char* name : {"a.bin", "b.gguf", "c.txt", "d.BIN", "bin", "e.bin.parlivo-download"})
        write(from() + QLatin1Char('/') + QLatin1String(name), name);
    moveModels(from(), to());
    EXPECT_EQ(files(to()), QStringList({QStringLiteral("a.bin"), QStringLiteral("b.gguf")}));
    EXPECT_EQ(files(from()).size(), 4);
    EXPECT_EQ(read(to() + QStringLiteral("/b.gguf")), "b.gguf");
}

TEST_F(ModelsMoveTest, AFileOfThatNameIsNeverOverwritten) {
    write(from() + QStringLiteral("/a.bin"), "old");
    write(to() + QStringLiteral("/a.bin"), "there");
    write(from() + QStringLiteral("/b.bin"), "next");
    moveModels(from(), to());
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), "old");
    EXPECT_EQ(read(to() + QStringLiteral("/a.bin")), "there");
    EXPECT_EQ(read(to() + QStringLiteral("/b.bin")), "next") << "the others are still tried";
}

TEST_F(ModelsMoveTest, IntoItselfNothingHappens) {
    write(from() + QStringLiteral("/a.bin"), "a");
    moveModels(from(), from());
    moveModels(from(), from() + QStringLiteral("/../da"));
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), "a");
}

TEST_F(ModelsMoveTest, IntoItselfThroughALinkNothingHappens) {
    write(from() + QStringLiteral("/a.bin"), "a");
    const QString link = to() + QStringLiteral("/link");
    ASSERT_TRUE(QFile::link(from(), link));
    moveModels(from(), link);
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), "a");
}

TEST_F(ModelsMoveTest, IntoAFolderBelowItself) {
    write(from() + QStringLiteral("/a.bin"), "a");
    const QString below = from() + QStringLiteral("/dentro");
    QDir().mkpath(below);
    moveModels(from(), below);
    EXPECT_EQ(read(below + QStringLiteral("/a.bin")), "a");
}

TEST_F(ModelsMoveTest, AFolderThatIsNotThereMovesNothing) {
    moveModels(from() + QStringLiteral("/nessuna"), to());
    EXPECT_TRUE(files(to()).isEmpty());
    write(from() + QStringLiteral("/a.bin"), "a");
    moveModels(from(), to() + QStringLiteral("/nessuna"));
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), "a");
}

TEST_F(ModelsMoveTest, AcrossFileSystemsTheWholeFileMoves) {
    ASSERT_FALSE(otherFileSystem().isEmpty()) << "no second file system to try this with";
    const QTemporaryDir other(otherFileSystem() + QStringLiteral("/parlivo-XXXXXX"));
    const QByteArray contents = QByteArray("modello ").repeated(400'000);
    write(from() + QStringLiteral("/a.gguf"), contents);
    moveModels(from(), other.path());
    EXPECT_TRUE(files(from()).isEmpty());
    EXPECT_EQ(files(other.path()), QStringList(QStringLiteral("a.gguf")));
    EXPECT_EQ(read(other.filePath(QStringLiteral("a.gguf"))), contents);
}

TEST_F(ModelsMoveTest, OntoAFullDiskTheFileStaysAndTheOthersAreTried) {
    ASSERT_FALSE(otherFileSystem().isEmpty()) << "no second file system to try this with";
    const QTemporaryDir other(otherFileSystem() + QStringLiteral("/parlivo-XXXXXX"));
    const QByteArray large = QByteArray("x").repeated(3'000'000);
    write(from() + QStringLiteral("/a.bin"), large);
    write(from() + QStringLiteral("/b.bin"), "small");
    {
        const FileSizeLimit full(2'000'000);
        moveModels(from(), other.path());
    }
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), large);
    EXPECT_EQ(files(other.path()), QStringList(QStringLiteral("b.bin"))) << "no half file is left";
}

TEST_F(ModelsMoveTest, AcrossFileSystemsTheEndOfTheProgramLeavesTheOriginal) {
    ASSERT_FALSE(otherFileSystem().isEmpty()) << "no second file system to try this with";
    const QTemporaryDir other(otherFileSystem() + QStringLiteral("/parlivo-XXXXXX"));
    write(from() + QStringLiteral("/a.bin"), "a");
    Clock::interruptAll();
    moveModels(from(), other.path());
    EXPECT_EQ(read(from() + QStringLiteral("/a.bin")), "a");
    EXPECT_TRUE(files(other.path()).isEmpty());
}

}  // namespace
}  // namespace parlivo
