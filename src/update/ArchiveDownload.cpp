// SPDX-License-Identifier: MIT
#include "update/ArchiveDownload.h"

#include "platform/Platform.h"
#include "support/FileLock.h"
#include "support/Http.h"
#include "support/OwnerOnly.h"
#include "support/Uuid.h"

#include <QFile>

#include <cerrno>

namespace parlivo {

FetchedArchive fetchArchive(const QUrl& url, qint64 expectedSize, const StopToken& calledOff) {
    const auto kept = std::make_shared<ScopedFile>(Platform::current().directories().temporary() +
                                                   QStringLiteral("/parlivo-update-%1.zip").arg(freshUuid()));
    QFile file(kept->path());
    UniqueFd descriptor = createLockedFile(kept->path(), ownerOnlyMode);
    if (!descriptor) return {nullptr, Error::system(errno, kept->path())};
    const bool isOpen = file.open(descriptor.release(), QIODevice::WriteOnly | QIODevice::Unbuffered,
                                  QFileDevice::AutoCloseHandle);
    HttpRequest request;
    request.url = url;
    // A body that is compressed on its way has another size than the file that was asked for.
    request.headers = {{"Accept-Encoding", "identity"}};
    const auto receive = [&](QByteArrayView bytes, const Http::Head&) {
        return isOpen && file.write(bytes.data(), bytes.size()) == bytes.size() &&
               file.size() <= expectedSize;
    };
    const HttpReply reply = Http::download(request, receive, calledOff);
    if (!isOpen || file.error() != QFileDevice::NoError) return {nullptr, Error::file(file)};
    if (reply.failure && file.size() <= expectedSize) return {nullptr, reply.failure};
    kept->lock();
    return {kept, std::nullopt};
}

}  // namespace parlivo
