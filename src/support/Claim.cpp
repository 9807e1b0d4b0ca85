#include "support/Claim.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace parlivo {

namespace {

/// Closed by hand where it is used: nothing in between throws. A name may belong to anything by now: a link
/// is not followed, a pipe not waited for.
int openAsItIs(const QByteArray& name) {
    return ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
}

bool isOurs(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && status.st_uid == geteuid() &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

/// Whether it is still there: somebody who looked for left-overs just now may have deleted it, new as it is.
bool claimOpenFile(int descriptor) {
    // Only removeUnclaimed() takes an exclusive lock, and lets go of it when the file is deleted. A file
    // system that knows no locks refuses both, and nothing is ever deleted there.
    while (flock(descriptor, LOCK_SH) != 0 && errno == EINTR) {
    }
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

}  // namespace

int createClaimedFile(const QString& path, unsigned permissions) {
    const QByteArray name = QFile::encodeName(path);
    while (true) {
        const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
        if (descriptor < 0 || claimOpenFile(descriptor)) return descriptor;
        close(descriptor);
    }
}

std::optional<Claim> createClaimedFolder(const QString& path) {
    while (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0) {
        if (auto claim = Claim::on(path)) return claim;
        if (errno != ENOENT) break;
    }
    return {};
}

std::optional<Claim> Claim::on(const QString& path) {
    const int descriptor = openAsItIs(QFile::encodeName(path));
    if (descriptor < 0) return {};
    Claim claim(descriptor);
    if (claimOpenFile(descriptor)) return claim;
    errno = ENOENT;
    return {};
}

Claim::~Claim() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool isClaimed(const QString& path) {
    const int descriptor = openAsItIs(QFile::encodeName(path));
    if (descriptor < 0) return false;
    const bool claimed = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(descriptor);
    return claimed;
}

void removeUnclaimed(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = openAsItIs(name);
    if (descriptor < 0) return;
    if (isOurs(descriptor) && flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        std::error_code ignored;
        std::filesystem::remove_all(name.toStdString(), ignored);
    }
    close(descriptor);
}

}  // namespace parlivo
