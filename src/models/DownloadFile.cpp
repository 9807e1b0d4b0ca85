#include "models/DownloadFile.h"

#include "support/Claim.h"
#include "support/Error.h"
#include "support/Uuid.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <utility>

namespace parlivo {

namespace {

const QString suffix = QStringLiteral(".parlivo-download");
constexpr unsigned permissions = 0666;  // less the user's own mask

}  // namespace

DownloadFile::DownloadFile(QString destination)
    : destination_(std::move(destination)),
      temporary_(destination_ + QLatin1Char('.') + freshUuid() + suffix) {}

DownloadFile::~DownloadFile() {
    if (descriptor_ < 0) return;
    close(descriptor_);
    // No longer there once it was moved into its place.
    QFile::remove(temporary_);
}

void DownloadFile::append(QByteArrayView bytes) {
    open();
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor_, bytes.data(), static_cast<std::size_t>(bytes.size()));
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
    if (fstat(descriptor_, &status) != 0) fail();
    return status.st_size;
}

void DownloadFile::moveIntoPlace() {
    open();
    // The name must not reach the disk before the bytes: after a power cut the size alone would look right.
    if (fsync(descriptor_) != 0) fail();
    const int result =
        std::rename(QFile::encodeName(temporary_).constData(), QFile::encodeName(destination_).constData());
    if (result != 0) fail();
}

void DownloadFile::open() {
    if (descriptor_ >= 0) return;
    descriptor_ = createClaimedFile(temporary_, permissions);
    if (descriptor_ < 0) fail();
}

void DownloadFile::fail() const {
    throw Error::system(errno, QFileInfo(destination_).fileName());
}

void DownloadFile::removeLeftovers(const QString& folder) {
    const QDir models(folder);
    const QStringList leftovers = models.entryList({QLatin1Char('*') + suffix}, QDir::Files | QDir::Hidden);
    for (const QString& leftover : leftovers) removeUnclaimed(models.filePath(leftover));
}

}  // namespace parlivo
