// SPDX-License-Identifier: MIT
#include "models/Downloader.h"

#include "models/Checksums.h"
#include "models/DownloadFile.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Http.h"
#include "support/MainQueue.h"
#include "support/Worker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
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

/// The 64 hexadecimal digits of an entity tag that is a SHA-256; empty for any other.
QByteArray sha256In(const QByteArray& tag) {
    static const QRegularExpression pattern(QStringLiteral("^\"([0-9A-Fa-f]{64})\"$"));
    return pattern.match(QString::fromLatin1(tag)).captured(1).toLatin1();
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
          sha1_(entry.sha1),
          file_(std::in_place, destination) {
        request_.url = entry.url;
        request_.timeout = 60s;
        // A body that is compressed on its way has another size than the file that was asked for.
        request_.headers = {{"Accept-Encoding", "identity"}};
        // The host redirects to where the bytes are, and says what they hash to.
        request_.firstHeader = "X-Linked-Etag";
    }

    void run(const StopToken& calledOff) {
        const auto receive = [this](QByteArrayView bytes, const Http::Head& head) {
            return take(bytes, head);
        };
        const HttpReply reply = Http::download(request_, receive, calledOff);
        // Nobody is interested any more, not even in what is on the disk.
        if (calledOff.stopRequested()) return;
        statedLength_ = reply.statedLength;
        const bool ended = !reply.failure || diskFailure_ || tooLong_ || isCutOff(reply);
        const auto retriable = ended ? checksumFailure() : reply.failure;
        if (retriable) {
            file_.reset();
            onMain([failure = *retriable](Downloader& downloader) { downloader.transferFailed(failure); });
        } else {
            settle();
        }
    }

  private:
    /// False if there is no use in more.
    bool take(QByteArrayView bytes, const Http::Head& head) {
        try {
            if (written_ == 0) begin(head);
            // One byte beyond the expected size shows that the file is another.
            const auto room = expectedSize_ >= 1 ? expectedSize_ + 1 - written_ : bytes.size();
            const QByteArrayView piece = bytes.first(std::min<qsizetype>(bytes.size(), room));
            file_->append(piece);
            checksums_.add(piece);
            written_ += piece.size();
        } catch (const Error& error) {
            diskFailure_ = error;
            return false;
        }
        reportProgress();
        tooLong_ = expectedSize_ >= 1 && written_ > expectedSize_;
        return !tooLong_;
    }

    /// Before the first bytes.
    void begin(const Http::Head& head) {
        statedLength_ = head.statedLength;
        const auto space = file_->freeSpace();
        if (space && *space < expectedLength()) throw Error::system(ENOSPC, fileName_);
        if (!sha1_.isEmpty()) checksums_.expect(QCryptographicHash::Sha1, sha1_);
        if (const QByteArray sha256 = sha256In(head.firstHeader); !sha256.isEmpty())
            checksums_.expect(QCryptographicHash::Sha256, sha256);
    }

    /// The size that the file is to have, 0 or less if nobody says.
    qint64 expectedLength() const { return expectedSize_ >= 1 ? expectedSize_ : statedLength_.load(); }

    /// Without a size of our own, a body that ends before its stated length is a file of the wrong size.
    bool isCutOff(const HttpReply& reply) const {
        return expectedSize_ < 1 && reply.status != 0 && reply.statedLength >= 1 && !reply.timedOut;
    }

    /// A file of the right size whose bytes are others: another try may bring the right ones.
    std::optional<Error> checksumFailure() const {
        if (diskFailure_ || written_ != expectedLength() || checksums_.match()) return std::nullopt;
        return incomplete(written_, expectedLength());
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
        const qint64 expected = expectedLength();
        // What is too long was not fetched to its end.
        const qint64 actual = tooLong_ ? std::max(file_->size(), statedLength_.load()) : file_->size();
        if (expected >= 1 && actual != expected) throw incomplete(actual, expected);
        moveIntoPlace();
        Log::info(QStringLiteral("download completato e verificato: ") + fileName_);
    }

    /// The models' folder may be exchanged for another before or while the file gets there.
    void moveIntoPlace() {
        QString folder;
        do {
            folder = Config::modelsDir();
            file_->moveTo(folder + QLatin1Char('/') + fileName_);
        } while (Config::modelsDir() != folder);
    }

    void onMain(std::function<void(Downloader&)> job) {
        MainQueue::async(alive_, [&downloader = downloader_, job = std::move(job)] { job(downloader); });
    }

    Downloader& downloader_;  ///< only touched on the main thread, while alive_
    const Lifetime::Token alive_;
    const qint64 expectedSize_;
    const QString fileName_;
    const QByteArray sha1_;
    HttpRequest request_;
    std::optional<DownloadFile> file_;
    std::optional<Error> diskFailure_;
    bool tooLong_ = false;
    Checksums checksums_;
    // Written by the worker, read by the main thread.
    std::atomic<qint64> statedLength_ = -1;
    std::atomic<qint64> written_ = 0;
    std::atomic<bool> reportDue_ = false;
};

Downloader::Downloader(ModelCatalog::Entry entry) : entry_(std::move(entry)) {}

Downloader::~Downloader() = default;

void Downloader::start() {
    const QString folder = Config::modelsDir();
    const QString destination = folder + QLatin1Char('/') + entry_.fileName;
    QDir().mkpath(folder);
    QFile::remove(destination);
    const auto attempt = std::make_shared<Attempt>(*this, entry_, destination);
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

void Downloader::removeStaleFiles() {
    DownloadFile::removeStaleFiles(Config::modelsDir());
}

}  // namespace parlivo
