#include "models/Downloader.h"

#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "support/SerialQueue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace parlivo {

namespace {

using namespace std::chrono_literals;

constexpr auto retryDelay = 3s;
/// No eye needs more than this, and a fast network would flood the main thread.
constexpr auto progressInterval = 50ms;
constexpr qint64 mebibyte = 1 << 20;

const QString temporarySuffix = QStringLiteral(".parlivo-download");

Error incomplete(qint64 actual, qint64 expected) {
    return {
        ErrorCode::IncompleteDownload,
        QStringLiteral("Download incompleto (%1MB su %2MB)").arg(actual / mebibyte).arg(expected / mebibyte)};
}

SerialQueue& finishing() {
    static SerialQueue queue(QStringLiteral("parlivo.downloads"));
    return queue;
}

Error fileError(const QFileDevice& file) {
    return {QStringLiteral("File"), file.error(), file.errorString()};
}

}  // namespace

/// One try of a download. Its file and counts belong to the network thread and, once the transfer is over, to
/// the finishing queue; what it finds out goes to the main thread.
class Downloader::Attempt : public std::enable_shared_from_this<Attempt> {
  public:
    Attempt(Downloader& downloader, const ModelCatalog::Entry& entry, QString destination)
        : downloader_(downloader),
          alive_(downloader.lifeline_.watch()),
          expectedSize_(entry.expectedSize),
          fileName_(entry.fileName),
          destination_(std::move(destination)),
          file_(destination_ + temporarySuffix) {}

    ~Attempt() { file_.remove(); }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    HttpTransfer::Receiver receiver() {
        auto self = shared_from_this();
        return {
            .receive = [self](const QByteArray& bytes) { return self->write(bytes); },
            .announced = [self](qint64 length) { self->announcedLength_ = length; },
            .finished = [self](const std::optional<Error>& failure) { self->finish(failure); },
        };
    }

  private:
    bool write(const QByteArray& bytes) {
        if (!file_.isOpen() &&
            !file_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
            failure_ = fileError(file_);
            return false;
        }
        if (file_.write(bytes) != bytes.size()) {
            failure_ = fileError(file_);
            return false;
        }
        written_ += bytes.size();
        reportProgress();
        return true;
    }

    void reportProgress() {
        const auto now = Clock::now();
        const qint64 total = announcedLength_ >= 1 ? announcedLength_ : std::max(expectedSize_, qint64{1});
        if (now < nextReport_ && written_ < total) return;
        nextReport_ = now + progressInterval;
        onMain([written = written_, total](Downloader& downloader) {
            if (!downloader.onProgress) return;
            downloader.onProgress(static_cast<double>(written) / static_cast<double>(total), written, total);
        });
    }

    void finish(const std::optional<Error>& transportFailure) {
        if (transportFailure) {
            file_.remove();
            onMain([failure = *transportFailure](Downloader& downloader) {
                downloader.transferFailed(failure);
            });
            return;
        }
        // Writing gigabytes out may take seconds, which the network thread does not have.
        finishing().async([self = shared_from_this()] { self->settle(); });
    }

    void settle() {
        if (!failure_) failure_ = verify();
        if (!failure_) failure_ = moveIntoPlace();
        if (failure_) {
            Log::info(QStringLiteral("errore salvataggio ") + fileName_ + QStringLiteral(": ") +
                      failure_->localizedDescription());
            file_.remove();
        } else {
            Log::info(QStringLiteral("download completato e verificato: ") + fileName_);
        }
        onMain([failure = failure_](Downloader& downloader) { downloader.complete(failure); });
    }

    std::optional<Error> verify() {
        // An empty body never opened the file.
        if (!file_.isOpen() && !file_.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fileError(file_);
        const qint64 expected = expectedSize_ >= 1 ? expectedSize_ : announcedLength_;
        const qint64 actual = file_.size();
        if (expected >= 1 && actual != expected) return incomplete(actual, expected);
        return std::nullopt;
    }

    std::optional<Error> moveIntoPlace() {
        // The name must not reach the disk before the bytes: after a power cut the size alone would look
        // right.
        if (fsync(file_.handle()) != 0) return Error::system(errno, fileName_);
        file_.close();
        if (std::rename(QFile::encodeName(file_.fileName()).constData(),
                        QFile::encodeName(destination_).constData()) != 0) {
            return Error::system(errno, fileName_);
        }
        return std::nullopt;
    }

    void onMain(std::function<void(Downloader&)> job) {
        MainQueue::async(alive_, [&downloader = downloader_, job = std::move(job)] { job(downloader); });
    }

    Downloader& downloader_;  ///< only touched on the main thread, while alive_
    const Lifeline::Watch alive_;
    const qint64 expectedSize_;
    const QString fileName_;
    const QString destination_;
    QFile file_;
    qint64 announcedLength_ = -1;
    qint64 written_ = 0;
    Clock::TimePoint nextReport_;
    std::optional<Error> failure_;
};

Downloader::Downloader(ModelCatalog::Entry entry)
    : entry_(std::move(entry)), destination_(Config::modelsDir() + QLatin1Char('/') + entry_.fileName) {}

Downloader::~Downloader() = default;

void Downloader::start() {
    QDir().mkpath(QFileInfo(destination_).path());
    QFile::remove(destination_);
    const auto attempt = std::make_shared<Attempt>(*this, entry_, destination_);
    transfer_ = HttpTransfer::start({.url = entry_.url, .timeout = 60s}, attempt->receiver());
    Log::info(QStringLiteral("download avviato: ") + entry_.fileName);
}

void Downloader::transferFailed(const Error& failure) {
    if (retriesLeft_ < 1) {
        complete(failure);
        return;
    }
    --retriesLeft_;
    Log::info(QStringLiteral("download ") + entry_.fileName + QStringLiteral(" fallito (") +
              failure.localizedDescription() + QStringLiteral("), retry"));
    MainQueue::after(retryDelay, lifeline_.watch(), [this] { start(); });
}

void Downloader::complete(const std::optional<Error>& error) {
    // A copy: the callback may destroy this object, and itself with it.
    const auto tell = onCompletion;
    if (tell) tell(error);
}

void Downloader::removeLeftovers() {
    QDir folder(Config::modelsDir());
    const QStringList leftovers =
        folder.entryList({QLatin1Char('*') + temporarySuffix}, QDir::Files | QDir::Hidden);
    for (const QString& leftover : leftovers) folder.remove(leftover);
}

}  // namespace parlivo
