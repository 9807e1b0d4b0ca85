// SPDX-License-Identifier: MIT
#include "audio/CaptureFile.h"

#include "support/Error.h"
#include "support/FileLock.h"
#include "support/OwnerOnly.h"

#include <QFile>

#include <cerrno>

namespace parlivo {

namespace {

/// Locked, so that no other start of the program takes it for a stale file. The caller closes it.
int createPrivateFile(const QString& path) {
    UniqueFd file = createLockedFile(path, ownerOnlyMode);
    if (!file) throw Error::system(errno, path);
    return file.release();
}

SF_INFO describe(const AudioFormat& format) {
    SF_INFO info{};
    info.samplerate = static_cast<int>(format.sampleRate);
    info.channels = format.channels;
    info.format = SF_FORMAT_CAF | SF_FORMAT_FLOAT | SF_ENDIAN_CPU;
    return info;
}

}  // namespace

CaptureFile::CaptureFile(const QString& path, const AudioFormat& format) {
    SF_INFO info = describe(format);
    const int descriptor = createPrivateFile(path);
    errno = 0;
    file_.reset(sf_open_fd(descriptor, SFM_WRITE, &info, SF_TRUE));
    if (!file_) {
        const Error error(QStringLiteral("libsndfile"), sf_error(nullptr),
                          soundFileMeaning(sf_error(nullptr), errno));
        QFile::remove(path);
        throw error.withDetail(QString::fromLocal8Bit(sf_strerror(nullptr)));
    }
    // Otherwise every block would be searched for its loudest sample, for a chunk that is never read.
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

void CaptureFile::append(std::span<const float> samples, std::size_t frames) noexcept {
    sf_writef_float(file_.get(), samples.data(), static_cast<sf_count_t>(frames));
}

}  // namespace parlivo
