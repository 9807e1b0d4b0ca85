// SPDX-License-Identifier: MIT
#include "models/DownloadFile.h"

#include "support/Error.h"
#include "support/FileLock.h"
#include "support/Uuid.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>

namespace parlivo {

namespace {

const QString suffix = QStringLiteral(".parlivo-download");
constexpr qsizetype blockSize = 1 << 20;
constexpr unsigned permissions = 0666;  // less the user's own mask

}  // namespace

DownloadFile::DownloadFile(const QString& destination)
    : path_(destination + QLatin1Char('.') + freshUuid() + suffix),
      name_(QFileInfo(destination).fileName()),
      temporary_(path_) {}

DownloadFile::~DownloadFile() {
    if (!descriptor_) return;
    descriptor_.reset();
    // No longer there once it was moved to its place.
    QFile::remove(temporary_);
}

void DownloadFile::append(QByteArrayView bytes) {
    open();
    while (!bytes.empty()) {
        const ssize_t count =
            ::write(descriptor_.get(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count >= 0) {
            bytes = bytes.sliced(count);
        } else if (errno != EINTR) {
            fail();
        }
    }
}

qint64 DownloadFile::size() {
    open();
    struct stat status = {};
    if (fstat(descriptor_.get(), &status) != 0) fail();
    return status.st_size;
}

std::optional<qint64> DownloadFile::freeSpace() {
    open();
    struct statvfs status = {};
    if (fstatvfs(descriptor_.get(), &status) != 0 || status.f_blocks == 0) return std::nullopt;
    return static_cast<qint64>(status.f_bavail) * static_cast<qint64>(status.f_frsize);
}

void DownloadFile::moveTo(const QString& place) {
    open();
    // The name must not reach the disk before the bytes: after a power cut the size alone would look right.
    if (fsync(descriptor_.get()) != 0) fail();
    if (std::rename(QFile::encodeName(path_).constData(), QFile::encodeName(place).constData()) != 0) {
        if (errno != EXDEV) fail();
        copyTo(place);
    }
    path_ = place;
}

void DownloadFile::copyTo(const QString& place) {
    DownloadFile copy(place);
    QByteArray block(blockSize, Qt::Uninitialized);
    for (off_t at = 0;;) {
        const ssize_t count =
            pread(descriptor_.get(), block.data(), static_cast<std::size_t>(block.size()), at);
        if (count < 0) fail();
        if (count == 0) break;
        copy.append(QByteArrayView(block).first(count));
        at += count;
    }
    copy.moveTo(place);
    QFile::remove(path_);
}

void DownloadFile::open() {
    if (descriptor_) return;
    descriptor_ = createLockedFile(temporary_, permissions);
    if (!descriptor_) fail();
}

void DownloadFile::fail() const {
    throw Error::system(errno, name_);
}

void DownloadFile::removeStaleFiles(const QString& folder) {
    const QDir models(folder);
    const QStringList unfinished = models.entryList({QLatin1Char('*') + suffix}, QDir::Files | QDir::Hidden);
    for (const QString& name : unfinished) removeUnlocked(models.filePath(name));
}

}  // namespace parlivo
