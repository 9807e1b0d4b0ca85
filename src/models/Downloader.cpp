#include "models/Downloader.h"

#include "models/DownloadFile.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "support/SerialQueue.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <utility>

namespace parlivo {

namespace {

using namespace std::chrono_literals;

constexpr auto retryDelay = 3s;
/// No eye needs more than this, and a fast network would flood the main thread.
constexpr auto progressInterval = 50ms;
constexpr qint64 mebibyte = 1 << 20;

Error incomplete(qint64 actual, qint64 expected) {
    return {
        ErrorCode::IncompleteDownload,
        QStringLiteral("Download incompleto (%1MB su %2MB)").arg(actual / mebibyte).arg(expected / mebibyte)};
}

SerialQueue& finishing() {
    static SerialQueue queue(QStringLiteral("parlivo.downloads"));
    return queue;
}

}  // namespace

/// One try of a download. Its file and counts belong to the network thread and, once the transfer is over, to
/// the finishing queue; what it finds out goes to the main thread.
class Downloader::Attempt : public std::enable_shared_from_this<Attempt> {
  public:
    Attempt(Downloader& downloader, const ModelCatalog::Entry& entry, const QString& destination)
        : downloader_(downloader),
          alive_(downloader.lifetime_.token()),
          expectedSize_(entry.expectedSize),
          fileName_(entry.fileName),
          file_(std::in_place, destination) {}

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
        try {
            file_->append(bytes);
        } catch (const Error& error) {
            failure_ = error;
            return false;
        }
        written_ += bytes.size();
        reportProgress();
        return true;
    }

    /// Tells where the transfer stands a moment later, and all that came meanwhile with it.
    void reportProgress() {
        if (reportDue_.exchange(true)) return;
        MainQueue::after(progressInterval, alive_, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (!self) return;
            self->reportDue_ = false;
            self->tellProgress();
        });
    }

    /// Main thread, while alive_.
    void tellProgress() const {
        if (!downloader_.onProgress) return;
        const qint64 announced = announcedLength_;
        const qint64 written = written_;
        const qint64 total = announced >= 1 ? announced : std::max(expectedSize_, qint64{1});
        downloader_.onProgress(static_cast<double>(written) / static_cast<double>(total), written, total);
    }

    void finish(const std::optional<Error>& transportFailure) {
        if (transportFailure) {
            file_.reset();
            onMain([failure = *transportFailure](Downloader& downloader) {
                downloader.transferFailed(failure);
            });
            return;
        }
        // Writing gigabytes out may take seconds, which the network thread does not have.
        finishing().async([self = shared_from_this()] { self->settle(); });
    }

    void settle() {
        try {
            if (failure_) throw Error(*failure_);
            verify();
            file_->moveIntoPlace();
            Log::info(QStringLiteral("download completato e verificato: ") + fileName_);
        } catch (const Error& error) {
            failure_ = error;
            Log::info(QStringLiteral("errore salvataggio ") + fileName_ + QStringLiteral(": ") +
                      error.localizedDescription());
        }
        // What is left of it must be gone before anybody hears of the end.
        file_.reset();
        onMain([self = shared_from_this()](Downloader& downloader) {
            if (!self->failure_) self->tellProgress();
            downloader.complete(self->failure_);
        });
    }

    void verify() {
        const qint64 expected = expectedSize_ >= 1 ? expectedSize_ : announcedLength_.load();
        const qint64 actual = file_->size();
        if (expected >= 1 && actual != expected) throw incomplete(actual, expected);
    }

    void onMain(std::function<void(Downloader&)> job) {
        MainQueue::async(alive_, [&downloader = downloader_, job = std::move(job)] { job(downloader); });
    }

    Downloader& downloader_;  ///< only touched on the main thread, while alive_
    const Lifetime::Token alive_;
    const qint64 expectedSize_;
    const QString fileName_;
    std::optional<DownloadFile> file_;
    std::atomic<qint64> announcedLength_ = -1;
    std::atomic<qint64> written_ = 0;
    std::atomic<bool> reportDue_ = false;
    std::optional<Error> failure_;
};

Downloader::Downloader(ModelCatalog::Entry entry)
    : entry_(std::move(entry)), destination_(Config::modelsDir() + QLatin1Char('/') + entry_.fileName) {}

Downloader::~Downloader() = default;

void Downloader::start() {
    QDir().mkpath(QFileInfo(destination_).path());
    QFile::remove(destination_);
    const auto attempt = std::make_shared<Attempt>(*this, entry_, destination_);
    // First of all: a short answer is dealt with on other threads before this one goes on.
    Log::info(QStringLiteral("download avviato: ") + entry_.fileName);
    transfer_ = HttpTransfer::start({.url = entry_.url, .timeout = 60s}, attempt->receiver());
}

void Downloader::transferFailed(const Error& failure) {
    if (retriesLeft_ < 1) {
        complete(failure);
        return;
    }
    --retriesLeft_;
    Log::info(QStringLiteral("download ") + entry_.fileName + QStringLiteral(" fallito (") +
              failure.localizedDescription() + QStringLiteral("), retry"));
    MainQueue::after(retryDelay, lifetime_.token(), [this] { start(); });
}

void Downloader::complete(const std::optional<Error>& error) {
    onProgress = nullptr;
    // A copy: the callback may destroy this object, and itself with it.
    const auto tell = onCompletion;
    if (tell) tell(error);
}

void Downloader::removeLeftovers() {
    DownloadFile::removeLeftovers(Config::modelsDir());
}

}  // namespace parlivo
