#include "update/ArchiveDownload.h"

#include "platform/Platform.h"
#include "support/Claim.h"
#include "support/Uuid.h"

#include <QFile>

#include <utility>

namespace parlivo {

namespace {

/// Of the network thread, once it is under way.
class Arrival {
  public:
    explicit Arrival(qint64 expectedSize)
        : expectedSize_(expectedSize),
          kept_(std::make_shared<ScopedFile>(Platform::current().directories().temporary() +
                                             QStringLiteral("/parlivo-update-%1.zip").arg(freshUuid()))),
          file_(kept_->path()) {}

    bool receive(const QByteArray& bytes) {
        if (!isOpen() || file_.write(bytes) != bytes.size()) return false;
        return file_.size() <= expectedSize_;
    }

    FetchedArchive finish(const std::optional<Error>& transportFailure) {
        if (transportFailure) return {nullptr, transportFailure};
        // An empty body never opened the file.
        if (!isOpen() || file_.error() != QFileDevice::NoError)
            return {nullptr, Error(QStringLiteral("File"), file_.error(), file_.errorString())};
        kept_->claim();
        file_.close();
        return {kept_, std::nullopt};
    }

  private:
    bool isOpen() {
        if (file_.isOpen()) return true;
        const int descriptor = createClaimedFile(kept_->path(), 0600);
        return descriptor >= 0 && file_.open(descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered,
                                             QFileDevice::AutoCloseHandle);
    }

    const qint64 expectedSize_;
    const std::shared_ptr<ScopedFile> kept_;
    QFile file_;
};

}  // namespace

std::unique_ptr<HttpTransfer> fetchArchive(const QUrl& url, qint64 expectedSize,
                                           std::function<void(const FetchedArchive&)> completion) {
    const auto arrival = std::make_shared<Arrival>(expectedSize);
    return HttpTransfer::start(
        {.url = url},
        {
            .receive = [arrival](const QByteArray& bytes) { return arrival->receive(bytes); },
            .announced = [](qint64) {},
            .finished = [arrival, completion = std::move(completion)](
                            const std::optional<Error>& failure) { completion(arrival->finish(failure)); },
        });
}

}  // namespace parlivo
