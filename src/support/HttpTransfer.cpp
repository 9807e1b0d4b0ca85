#include "support/HttpTransfer.h"

#include "support/Clock.h"
#include "support/HttpSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <atomic>
#include <optional>
#include <utility>

namespace parlivo {

namespace {

/// What may wait in memory while the disk is slower than the network.
constexpr qint64 readAhead = 2 << 20;  // bytes
/// What is handed on at a time: while it is written, the network fills the rest.
constexpr qint64 pieceSize = 128 << 10;  // bytes

/// What the user is told. Qt's own texts are English and name hosts and sockets.
QString describe(QNetworkReply::NetworkError error) {
    switch (error) {
        case QNetworkReply::ConnectionRefusedError:
            return QStringLiteral("il server rifiuta la connessione");
        case QNetworkReply::RemoteHostClosedError:
            return QStringLiteral("connessione interrotta dal server");
        case QNetworkReply::HostNotFoundError:
            return QStringLiteral("server non trovato: controlla la connessione");
        case QNetworkReply::TimeoutError:
        case QNetworkReply::OperationCanceledError:
            return QStringLiteral("il server non risponde");
        case QNetworkReply::SslHandshakeFailedError:
            return QStringLiteral("connessione sicura non riuscita");
        case QNetworkReply::TooManyRedirectsError:
            return QStringLiteral("troppi reindirizzamenti");
        case QNetworkReply::ProtocolUnknownError:
            return QStringLiteral("indirizzo non valido");
        default:
            return QStringLiteral("errore di rete");
    }
}

/// In bytes, -1 when there is none. Qt now and then lists what a redirection stated before the length that
/// counts.
qint64 statedLength(const QNetworkReply& reply) {
    if (reply.hasRawHeader("Transfer-Encoding")) return -1;
    bool isNumber = false;
    const qint64 length = reply.rawHeader("Content-Length").split(',').last().trimmed().toLongLong(&isNumber);
    return isNumber ? length : -1;
}

}  // namespace

struct HttpTransfer::Shared {
    Receiver receiver;
    std::atomic<bool> calledOff = false;
    // What follows is of the network thread alone.
    QPointer<QNetworkReply> reply;
    std::optional<qint64> announced;  ///< -1 without a length
    qint64 received = 0;
    bool refused = false;  ///< by the receiver

    void announceLength();
    void handOn();
    QNetworkReply::NetworkError error() const;
    void conclude();
};

void HttpTransfer::Shared::announceLength() {
    if (announced) return;
    announced = statedLength(*reply);
    receiver.announced(*announced);
}

void HttpTransfer::Shared::handOn() {
    while (!refused && !calledOff && reply->bytesAvailable() > 0) {
        announceLength();
        const QByteArray bytes = reply->read(pieceSize);
        received += bytes.size();
        if (receiver.receive(bytes)) continue;
        refused = true;
        reply->abort();
    }
}

QNetworkReply::NetworkError HttpTransfer::Shared::error() const {
    const auto reported = reply->error();
    if (HttpSession::isTransportError(reported)) return reported;
    // Now and then a connection that breaks off between two pieces is no error to Qt.
    return received < announced.value_or(-1) ? QNetworkReply::RemoteHostClosedError : reported;
}

void HttpTransfer::Shared::conclude() {
    if (calledOff) return;
    if (!refused && reply->isOpen()) handOn();
    announceLength();
    const auto outcome = error();
    if (refused || !HttpSession::isTransportError(outcome)) {
        receiver.finished(std::nullopt);
    } else {
        receiver.finished(Error(QStringLiteral("Network"), outcome, describe(outcome)));
    }
}

std::unique_ptr<HttpTransfer> HttpTransfer::start(const Request& request, Receiver receiver) {
    auto shared = std::make_shared<Shared>();
    shared->receiver = std::move(receiver);
    HttpSession::shared().onNetworkThread([shared, request](QNetworkAccessManager& manager) {
        if (shared->calledOff) return;
        QNetworkRequest qtRequest(request.url);
        qtRequest.setTransferTimeout(static_cast<int>(Clock::scaled(request.timeout).count()));
        qtRequest.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Parlivo"));
        // A body that is transparently decompressed has another size than the file that was asked for.
        qtRequest.setRawHeader("Accept-Encoding", "identity");
        QNetworkReply* reply = manager.get(qtRequest);
        reply->setReadBufferSize(readAhead);
        shared->reply = reply;
        QObject::connect(reply, &QNetworkReply::readyRead, reply, [shared] { shared->handOn(); });
        QObject::connect(reply, &QNetworkReply::finished, reply, [shared, reply] {
            shared->conclude();
            reply->deleteLater();
        });
    });
    return std::unique_ptr<HttpTransfer>(new HttpTransfer(std::move(shared)));
}

HttpTransfer::~HttpTransfer() {
    shared_->calledOff = true;
    HttpSession::shared().onNetworkThread([shared = shared_](QNetworkAccessManager&) {
        if (shared->reply) shared->reply->abort();
    });
}

}  // namespace parlivo
