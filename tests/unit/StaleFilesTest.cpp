// SPDX-License-Identifier: MIT
#include "app/StaleFiles.h"
#include "audio/CaptureFile.h"
#include "support/FileLock.h"
#include "support/PlatformTest.h"
#include "support/ScopedFile.h"
#include "support/Uuid.h"
#include "support/Waiting.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// What a start does to the files that it finds among the temporary ones.
class StaleFilesTest : public PlatformTest {
  protected:
    QString path(const QString& name) const { return platform.directories().temporary() + u'/' + name; }
    QString make(const QString& name) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("una voce") == 8) << name.toStdString();
        return path(name);
    }
    static QString recording(const QString& extension) {
        return u"parlivo-"_s + freshUuid() + u'.' + extension;
    }
    QStringList files() const {
        return QDir(platform.directories().temporary())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
};

TEST_F(StaleFilesTest, UnlockedStaleFilesAreRemoved) {
    make(recording(u"caf"_s));
    make(recording(u"wav"_s));
    const QString uuid = freshUuid();
    make(u"parlivo-"_s + uuid + u".caf"_s);
    make(u"parlivo-"_s + uuid + u".wav"_s);
    make(u"parlivo-update-"_s + freshUuid() + u".zip"_s);
    const QString update = u"parlivo-update-"_s + freshUuid();
    QDir().mkpath(path(update + u"/Parlivo.app/Contents"_s));
    make(update + u"/Parlivo.app/Contents/Info.plist"_s);
    removeStaleFiles();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(StaleFilesTest, WhatHasAnotherNameOrKindStays) {
    const QString uuid = freshUuid();
    QStringList others{
        u"parlivo-"_s + uuid + u".mp3"_s,           u"parlivo-"_s + uuid + u".caf.bak"_s,
        u"parlivo-"_s + uuid.toLower() + u".caf"_s, u"parlivo-"_s + uuid.chopped(1) + u".wav"_s,
        u"parlivo-mia registrazione.wav"_s,         u"la mia parlivo-"_s + uuid + u".caf"_s,
        u"Parlivo-"_s + uuid + u".wav"_s,           u"parlivo-update-note"_s,
        u"parlivo-update-"_s + uuid + u".zip.txt"_s};
    for (const QString& name : others) make(name);
    const QString folder = recording(u"caf"_s);
    const QString link = recording(u"caf"_s);
    const QString pipe = recording(u"wav"_s);
    QDir().mkpath(path(folder));
    QFile::link(path(others.first()), path(link));
    ASSERT_EQ(mkfifo(qPrintable(path(pipe)), 0600), 0);
    others += {folder, link, pipe};
    removeStaleFiles();
    others.sort();
    EXPECT_EQ(files(), others);
}

TEST_F(StaleFilesTest, WhatBelongsToAnotherUserStays) {
    const QString name = recording(u"caf"_s);
    make(name);
    if (::chown(qPrintable(path(name)), 65534, 65534) != 0) {
        // Only root makes files for others; to anybody else theirs are closed, as this one is then.
        ASSERT_NE(::geteuid(), 0U);
        ASSERT_EQ(::chmod(qPrintable(path(name)), 0), 0);
    }
    removeStaleFiles();
    EXPECT_EQ(files(), QStringList(name));
}

TEST_F(StaleFilesTest, ARecordingUnderWayStaysUntilItIsClosed) {
    const QString name = recording(u"caf"_s);
    {
        const CaptureFile file(path(name), {48'000, 1});
        removeStaleFiles();
        EXPECT_EQ(files(), QStringList(name));
    }
    removeStaleFiles();
    EXPECT_EQ(files(), QStringList());
}

TEST_F(StaleFilesTest, ARecordingThatWaitsToBeRecognisedStays) {
    const QString uuid = freshUuid();
    const QString capture = u"parlivo-"_s + uuid + u".caf"_s;
    const QString wav = u"parlivo-"_s + uuid + u".wav"_s;
    ScopedFile held(make(capture));
    make(wav);
    removeStaleFiles();
    EXPECT_EQ(files(), QStringList({capture, wav})) << "a WAV in the making is as safe as its capture file";
    const ScopedFile converted(path(wav));
    held.remove();
    removeStaleFiles();
    EXPECT_EQ(files(), QStringList(wav));
}

TEST_F(StaleFilesTest, ADeletedFileIsNotKeptOpen) {
    ScopedFile file(make(recording(u"caf"_s)));
    file.remove();
    for (const QString& descriptor : QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System))
        EXPECT_FALSE(QFile::symLinkTarget(u"/proc/self/fd/"_s + descriptor).contains(u"parlivo-"_s));
}

TEST_F(StaleFilesTest, TheFilesOfAKilledProcessAreFree) {
    const QString name = recording(u"caf"_s);
    const QString ready = path(u"pronto"_s);
    const pid_t other = fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        const ScopedFile locked(make(name));
        if (!QFile(ready).open(QIODevice::WriteOnly)) _exit(1);
        while (true) pause();
    }
    ASSERT_TRUE(desktop::waitFor([&] { return QFile::exists(ready); }));
    removeStaleFiles();
    EXPECT_TRUE(QFile::exists(path(name))) << "its process lives";
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    removeStaleFiles();
    EXPECT_FALSE(QFile::exists(path(name)));
}

TEST_F(StaleFilesTest, AFileMadeDuringACleanUpIsKept) {
    std::atomic<bool> done = false;
    std::jthread other([&] {
        while (!done) removeStaleFiles();
    });
    for (int i = 0; i < 300; ++i) {
        const QString capture = path(recording(u"caf"_s));
        const QString folder = path(u"parlivo-update-"_s + freshUuid());
        {
            const CaptureFile file(capture, {48'000, 1});
            const auto lock = createLockedFolder(folder);
            std::this_thread::yield();
            ASSERT_TRUE(QFile::exists(capture));
            ASSERT_TRUE(lock && QFile::exists(folder));
        }
    }
    done = true;
}

TEST_F(StaleFilesTest, WithoutATemporaryFolderNothingHappens) {
    QDir(platform.directories().temporary()).removeRecursively();
    removeStaleFiles();
    EXPECT_FALSE(QFile::exists(platform.directories().temporary()));
}

}  // namespace
}  // namespace parlivo
