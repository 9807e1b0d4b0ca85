#include "models/Downloader.h"

#include "models/DownloadFile.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Http.h"
#include "support/MainQueue.h"
#include "support/Worker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Downloader)
};

using namespace std::chrono_literals;

constexpr auto retryDelay = 3s;
/// No eye needs more than this, and a fast network would flood the main thread.
constexpr auto progressInterval = 50ms;
constexpr qint64 mebibyte = 1 << 20;

Error incomplete(qint64 actual, qint64 expected) {
    return {ErrorCode::IncompleteDownload,
            Texts::tr("Download incompleto (%1MB su %2MB)").arg(actual / mebibyte).arg(expected / mebibyte)};
}

}  // namespace

/// One try of a download, on a thread of its own: a slow disk slows the sender down and nobody else. What it
/// finds out goes to the main thread.
class Downloader::Attempt : public std::enable_shared_from_this<Attempt> {
  public:
    Attempt(Downloader& downloader, const ModelCatalog::Entry& entry, const QString& destination)
        : downloader_(downloader),
          alive_(downloader.lifetime_.token()),
          expectedSize_(entry.expectedSize),
          fileName_(entry.fileName),
          file_(std::in_place, destination) {
        request_.url = entry.url;
        request_.timeout = 60s;
        // A body that is compressed on its way has another size than the file that was asked for.
        request_.headers = {{"Accept-Encoding", "identity"}};
    }

    void run(const StopToken& calledOff) {
        const auto receive = [this](QByteArrayView bytes, qint64 statedLength) {
            statedLength_ = statedLength;
            return write(bytes);
        };
        const HttpReply reply = Http::download(request_, receive, calledOff);
        // Nobody is interested any more, not even in what is on the disk.
        if (calledOff.stopRequested()) return;
        if (!diskFailure_ && reply.failure) {
            file_.reset();
            onMain(
                [failure = *reply.failure](Downloader& downloader) { downloader.transferFailed(failure); });
        } else {
            settle();
        }
    }

  private:
    bool write(QByteArrayView bytes) {
        try {
            file_->append(bytes);
        } catch (const Error& error) {
            diskFailure_ = error;
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
        const qint64 stated = statedLength_;
        const qint64 written = written_;
        const qint64 total = stated >= 1 ? stated : std::max(expectedSize_, qint64{1});
        downloader_.onProgress(static_cast<double>(written) / static_cast<double>(total), written, total);
    }

    void settle() {
        std::optional<Error> failure = diskFailure_;
        try {
            if (!failure) keep();
        } catch (const Error& error) {
            failure = error;
        }
        if (failure)
            Log::info(QStringLiteral("errore salvataggio ") + fileName_ + QStringLiteral(": ") +
                      failure->localizedDescription());
        // What is left of it must be gone before anybody hears of the end.
        file_.reset();
        onMain([self = shared_from_this(), failure](Downloader& downloader) {
            if (!failure) self->tellProgress();
            downloader.complete(failure);
        });
    }

    void keep() {
        const qint64 expected = expectedSize_ >= 1 ? expectedSize_ : statedLength_.load();
        const qint64 actual = file_->size();
        if (expected >= 1 && actual != expected) throw incomplete(actual, expected);
        file_->moveIntoPlace();
        Log::info(QStringLiteral("download completato e verificato: ") + fileName_);
    }

    void onMain(std::function<void(Downloader&)> job) {
        MainQueue::async(alive_, [&downloader = downloader_, job = std::move(job)] { job(downloader); });
    }

    Downloader& downloader_;  ///< only touched on the main thread, while alive_
    const Lifetime::Token alive_;
    const qint64 expectedSize_;
    const QString fileName_;
    HttpRequest request_;
    std::optional<DownloadFile> file_;
    std::optional<Error> diskFailure_;
    // Written by the worker, read by the main thread.
    std::atomic<qint64> statedLength_ = -1;
    std::atomic<qint64> written_ = 0;
    std::atomic<bool> reportDue_ = false;
};

Downloader::Downloader(ModelCatalog::Entry entry)
    : entry_(std::move(entry)), destination_(Config::modelsDir() + QLatin1Char('/') + entry_.fileName) {}

Downloader::~Downloader() = default;

void Downloader::start() {
    QDir().mkpath(QFileInfo(destination_).path());
    QFile::remove(destination_);
    const auto attempt = std::make_shared<Attempt>(*this, entry_, destination_);
    // First of all: a short answer is dealt with on the worker before this thread goes on.
    Log::info(QStringLiteral("download avviato: ") + entry_.fileName);
    worker_ = std::make_unique<Worker>(QStringLiteral("parlivo.download"),
                                       [attempt](const StopToken& calledOff) { attempt->run(calledOff); });
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
