// SPDX-License-Identifier: MIT
#include "models/ModelsMove.h"
#include "models/ModelsMover.h"
#include "support/PlatformTest.h"
#include "support/Waiting.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <thread>

namespace {

/// Whether link(2) fails as on a file system that has no hard links, such as FAT.
bool withoutHardLinks = false;

}  // namespace

/// In the place of the C library's.
extern "C" int link(const char* from, const char* to) noexcept {
    const int result = linkat(AT_FDCWD, from, AT_FDCWD, to, 0);
    if (result != 0 || !withoutHardLinks) return result;
    unlink(to);
    errno = EPERM;
    return -1;
}

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// With the new folder adopted at once.
void moveModels(const QString& from, const QString& to) {
    ModelsMove move(from, to);
    move.stage();
    move.commit();
}

/// Moves from one disk to another; TMPDIR is a small one here (8 MiB).
class ModelsMoveDiskTest : public PlatformTest {
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

TEST_F(ModelsMoveDiskTest, WhatDoesNotFitStaysAndTheRestMoves) {
    write(from(u"a.bin"_s), model(12 << 20));
    write(from(u"b.gguf"_s), model(1 << 20));
    moveModels(from_.path(), small_.path());
    EXPECT_TRUE(read(from(u"a.bin"_s)) == model(12 << 20));
    EXPECT_EQ(files(from_.path()), QStringList(u"a.bin"_s));
    EXPECT_TRUE(read(small(u"b.gguf"_s)) == model(1 << 20));
    EXPECT_EQ(files(small_.path()), QStringList(u"b.gguf"_s)) << "no half file is left";
}

TEST_F(ModelsMoveDiskTest, WithoutHardLinksFilesAreRenamed) {
    const QTemporaryDir third{u"/tmp/parlivo-XXXXXX"_s};
    write(from(u"a.bin"_s), "mine");
    withoutHardLinks = true;
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(files(from_.path()), QStringList());
    EXPECT_EQ(files(to_.path()), QStringList(u"a.bin"_s));
    moveModels(to_.path(), third.path());
    withoutHardLinks = false;
    EXPECT_EQ(files(to_.path()), QStringList());
    EXPECT_EQ(files(third.path()), QStringList(u"a.bin"_s));
    EXPECT_EQ(read(third.filePath(u"a.bin"_s)), "mine");
}

TEST_F(ModelsMoveDiskTest, AFileOfThatNameIsNeverOverwritten) {
    write(from(u"a.bin"_s), "mine");
    write(to(u"a.bin"_s), "there");
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(read(from(u"a.bin"_s)), "mine");
    EXPECT_EQ(read(to(u"a.bin"_s)), "there");
}

TEST_F(ModelsMoveDiskTest, AFileThatAppearsDuringTheCopyingIsNotOverwritten) {
    constexpr int rounds = 20;
    int appeared = 0;
    for (int round = 0; round < rounds; ++round) {
        write(from(u"a.bin"_s), model(6 << 20));
        std::thread other([&] {
            while (!QFile::exists(to(u"a.bin.parlivo-move"_s)) && !QFile::exists(to(u"a.bin"_s))) {
            }
            QFile file(to(u"a.bin"_s));
            if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && file.write("altro") == 5) ++appeared;
        });
        moveModels(from_.path(), to_.path());
        other.join();
        const QByteArray there = read(to(u"a.bin"_s));
        EXPECT_TRUE(there == "altro" || there == model(6 << 20)) << round;
        EXPECT_EQ(read(from(u"a.bin"_s)) == model(6 << 20), there == "altro")
            << "one of them is the model, in round " << round;
        EXPECT_EQ(files(to_.path()), QStringList(u"a.bin"_s));
        QFile::remove(from(u"a.bin"_s));
        QFile::remove(to(u"a.bin"_s));
    }
    EXPECT_GT(appeared, 0) << "the other program came in between at least once";
}

TEST_F(ModelsMoveDiskTest, AFolderWithAModelsNameStays) {
    QDir().mkpath(from(u"cartella.bin/dentro"_s));
    write(from(u"b.gguf"_s), "b");
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(files(from(u"cartella.bin"_s)), QStringList(u"dentro"_s));
    EXPECT_EQ(files(to_.path()), QStringList(u"b.gguf"_s));
}

/// Where a move was when its program was killed, and what the next start makes of it.
class KilledMoveTest : public ModelsMoveDiskTest {
  protected:
    enum class Adopted { No, Yes };

    /// Runs `move` in a process of its own, which is killed when `reached` holds.
    static void killDuring(const std::function<void()>& move, const std::function<bool()>& reached) {
        const pid_t mover = fork();
        ASSERT_GE(mover, 0);
        if (mover == 0) {
            move();
            while (true) pause();
        }
        EXPECT_TRUE(desktop::waitFor(reached));
        kill(mover, SIGKILL);
        waitpid(mover, nullptr, 0);
    }

    void recover(Adopted adopted) {
        store(Settings::modelsDir, adopted == Adopted::Yes ? to_.path() : from_.path());
        ModelsMove::recover();
        EXPECT_FALSE(QFile::exists(Config::appSupportDir() + u"/models-move"_s));
    }

    const QByteArray large = model(64 << 20);
    const QStringList both{u"a.gguf"_s, u"b.bin"_s};
};

TEST_F(KilledMoveTest, InTheMiddleOfACopy) {
    write(from(u"a.gguf"_s), "piccolo");
    write(from(u"b.bin"_s), large);
    killDuring([this] { ModelsMove(from_.path(), to_.path()).stage(); },
               [this] { return QFileInfo(to(u"b.bin.parlivo-move"_s)).size() > 0; });
    EXPECT_EQ(files(from_.path()), both) << "the folder that is in force stays complete";
    recover(Adopted::No);
    EXPECT_EQ(files(to_.path()), QStringList()) << "and nothing of it lies about elsewhere";
    EXPECT_TRUE(read(from(u"b.bin"_s)) == large);
    moveModels(from_.path(), to_.path());
    EXPECT_EQ(files(to_.path()), both) << "another try brings them there";
    EXPECT_TRUE(read(to(u"b.bin"_s)) == large);
    EXPECT_EQ(files(from_.path()), QStringList());
}

TEST_F(KilledMoveTest, BetweenBringingAndAdopting) {
    for (const QString& target : {to_.path(), from(u"dentro"_s)}) {
        write(from(u"a.gguf"_s), "a");
        write(from(u"b.bin"_s), "b");
        QDir().mkpath(target);
        killDuring(
            [&] {
                ModelsMove move(from_.path(), target);
                move.stage();
                while (true) pause();
            },
            [&] { return files(target) == both; });
        EXPECT_EQ(read(from(u"a.gguf"_s)) + read(from(u"b.bin"_s)), "ab");
        recover(Adopted::No);
        EXPECT_EQ(read(from(u"a.gguf"_s)) + read(from(u"b.bin"_s)), "ab");
        EXPECT_EQ(files(target), QStringList()) << target.toStdString();
    }
}

TEST_F(KilledMoveTest, BetweenAdoptingAndFinishing) {
    write(from(u"a.gguf"_s), "a");
    write(from(u"b.bin"_s), "b");
    write(from(u"c.bin"_s), "mio");
    write(to(u"c.bin"_s), "suo");
    killDuring(
        [&] {
            ModelsMove move(from_.path(), to_.path());
            move.stage();
            while (true) pause();
        },
        [&] { return files(to_.path()).size() == 3; });
    recover(Adopted::Yes);
    EXPECT_EQ(read(to(u"a.gguf"_s)) + read(to(u"b.bin"_s)), "ab");
    EXPECT_EQ(files(from_.path()), QStringList(u"c.bin"_s));
    EXPECT_EQ(read(to(u"c.bin"_s)), "suo");
}

TEST_F(KilledMoveTest, AMoveOfALivingProgramIsLeftAlone) {
    write(from(u"a.gguf"_s), "a");
    ModelsMove move(from_.path(), to_.path());
    move.stage();
    store(Settings::modelsDir, from_.path());
    ModelsMove::recover();
    EXPECT_EQ(files(to_.path()), QStringList(u"a.gguf"_s));
    move.commit();
    EXPECT_EQ(files(from_.path()), QStringList());
}

TEST_F(ModelsMoveDiskTest, AMoveThatIsNotAdoptedIsRolledBack) {
    write(from(u"a.gguf"_s), "a");
    write(from(u"b.bin"_s), "b");
    write(to(u"b.bin"_s), "sua");
    ModelsMove(from_.path(), to_.path()).stage();
    EXPECT_EQ(read(from(u"a.gguf"_s)) + read(from(u"b.bin"_s)), "ab");
    EXPECT_EQ(files(to_.path()), QStringList(u"b.bin"_s));
    EXPECT_EQ(read(to(u"b.bin"_s)), "sua");
}

TEST_F(ModelsMoveDiskTest, AJournalThatWasNotWrittenToItsEndIsIgnored) {
    write(from(u"a.gguf"_s), "a");
    write(to(u"a.gguf"_s), "b");
    const QByteArray folders = from_.path().toUtf8() + '\n' + to_.path().toUtf8();
    for (const QByteArray& note : {QByteArray(), folders.left(9), folders, QByteArray(folders + "\na.gg"),
                                   QByteArray(folders + "\na.gguf")}) {
        write(Config::appSupportDir() + u"/models-move"_s, note);
        store(Settings::modelsDir, from_.path());
        ModelsMove::recover();
        EXPECT_EQ(read(to(u"a.gguf"_s)), "b") << note.toStdString();
    }
}

TEST_F(ModelsMoveDiskTest, ADownloadThatEndsInTheOldFolderMeanwhileComesAlong) {
    store(Settings::modelsDir, from_.path());
    write(from(u"a.bin"_s), "first");
    ModelsMover mover;
    mover.move(to_.path(), [this] { write(from(u"b.bin"_s), "latecomer"); });
    EXPECT_TRUE(desktop::waitFor([this] { return files(from_.path()).isEmpty(); }));
    EXPECT_EQ(read(to(u"a.bin"_s)), "first");
    EXPECT_EQ(read(to(u"b.bin"_s)), "latecomer");
}

}  // namespace
}  // namespace parlivo
