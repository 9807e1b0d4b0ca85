#include "support/HttpTransfer.h"

#include "support/Clock.h"
#include "support/HttpSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <atomic>
#include <utility>

namespace parlivo {

namespace {

/// What may wait in memory while the disk is slower than the network.
constexpr qint64 readAhead = 4 << 20;  // bytes

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

}  // namespace

struct HttpTransfer::Shared {
    Receiver receiver;
    std::atomic<bool> calledOff = false;
    // What follows is of the network thread alone.
    QPointer<QNetworkReply> reply;
    bool lengthAnnounced = false;
    bool refused = false;  ///< by the receiver

    void announceLength();
    void handOn();
    void conclude();
};

void HttpTransfer::Shared::announceLength() {
    if (std::exchange(lengthAnnounced, true)) return;
    const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
    receiver.announced(length.isValid() ? length.toLongLong() : -1);
}

void HttpTransfer::Shared::handOn() {
    while (!refused && !calledOff && reply->bytesAvailable() > 0) {
        announceLength();
        if (receiver.receive(reply->read(readAhead))) continue;
        refused = true;
        reply->abort();
    }
}

void HttpTransfer::Shared::conclude() {
    if (calledOff) return;
    if (!refused && reply->isOpen()) handOn();
    const auto error = reply->error();
    if (refused || !HttpSession::isTransportError(error)) {
        receiver.finished(std::nullopt);
    } else {
        receiver.finished(Error(QStringLiteral("Network"), error, describe(error)));
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
