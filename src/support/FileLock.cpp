// SPDX-License-Identifier: MIT
#include "support/FileLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

namespace parlivo {

namespace {

/// The name may belong to anything by now: a link is not followed, a pipe not waited for.
UniqueFd openWithoutFollowing(const QByteArray& name) {
    return UniqueFd(::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
}

bool belongsToUser(const UniqueFd& file) {
    struct stat status = {};
    return fstat(file.get(), &status) == 0 && status.st_uid == geteuid() &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

/// False if the file is gone: a process that looked for stale files may have deleted it in the moment between
/// its creation and its lock.
bool lockOpenFile(const UniqueFd& file) {
    // Only removeUnlocked() takes an exclusive lock, and releases it when the file is deleted. A file system
    // that knows no locks refuses both, and nothing is ever deleted there.
    while (flock(file.get(), LOCK_SH) != 0 && errno == EINTR) {
    }
    struct stat status = {};
    return fstat(file.get(), &status) == 0 && status.st_nlink > 0;
}

}  // namespace

UniqueFd createLockedFile(const QString& path, unsigned permissions) {
    const QByteArray name = QFile::encodeName(path);
    while (true) {
        UniqueFd file(
            ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, permissions));
        if (!file || lockOpenFile(file)) return file;
    }
}

std::optional<FileLock> createLockedFolder(const QString& path) {
    while (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0) {
        if (auto lock = FileLock::acquire(path)) return lock;
        if (errno != ENOENT) break;
    }
    return {};
}

std::optional<FileLock> FileLock::acquire(const QString& path) {
    UniqueFd file = openWithoutFollowing(QFile::encodeName(path));
    if (!file) return {};
    if (lockOpenFile(file)) return FileLock(std::move(file));
    errno = ENOENT;
    return {};
}

bool isLocked(const QString& path) {
    const UniqueFd file = openWithoutFollowing(QFile::encodeName(path));
    return file && flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

bool removeUnlocked(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const UniqueFd file = openWithoutFollowing(name);
    if (!file || !belongsToUser(file) || flock(file.get(), LOCK_EX | LOCK_NB) != 0) return false;
    std::error_code failure;
    return std::filesystem::remove_all(name.toStdString(), failure) > 0 && !failure;
}

}  // namespace parlivo
