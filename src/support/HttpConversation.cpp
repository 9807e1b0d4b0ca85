#include "support/HttpConversation.h"

#include "support/Clock.h"

#include <QNetworkProxy>

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

using Progress = HttpResponseReader::Progress;

/// A server that sends faster than its reply is read has to wait.
constexpr qint64 readAhead = 1 << 20;

/// A body is handed to the socket in pieces of this size: the socket keeps a copy of what waits in it.
constexpr qsizetype piece = 1 << 20;

constexpr int httpPort = 80;

/// The request as it is sent before its body (RFC 9112).
QByteArray headOf(const HttpRequest& request) {
    const QUrl target =
        request.url.adjusted(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment);
    QByteArray head = request.method + ' ' + (target.isEmpty() ? "/" : target.toEncoded()) +
                      " HTTP/1.1\r\nHost: " + request.url.authority(QUrl::FullyEncoded).toLatin1() +
                      "\r\nUser-Agent: Parlivo\r\nConnection: close\r\n";
    for (const auto& [name, value] : request.headers) head += name + ": " + value + "\r\n";
    if (!request.body.isEmpty()) {
        head += "Content-Length: " + QByteArray::number(request.body.size()) + "\r\n";
    }
    return head += "\r\n";
}

}  // namespace

HttpConversation::HttpConversation(const HttpRequest& request, Completion completion, QObject* parent)
    : QObject(parent),
      body_(request.body),
      reader_(request.maximumReplySize),
      completion_(std::move(completion)) {
    silence_.setSingleShot(true);
    silence_.setInterval(std::max(Clock::scaled(request.timeout), std::chrono::milliseconds(1)));
    silence_.callOnTimeout(this, [this] { finish(Progress::Broken); });
    connect(&socket_, &QTcpSocket::connected, this, [this, head = headOf(request)] { begin(head); });
    connect(&socket_, &QTcpSocket::bytesWritten, this, &HttpConversation::speakOn);
    connect(&socket_, &QTcpSocket::readyRead, this, &HttpConversation::listen);
    // The peer's hanging up is an error to Qt, too.
    connect(&socket_, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError error) {
        listen();
        finish(error == QAbstractSocket::RemoteHostClosedError ? reader_.end() : Progress::Broken);
    });
    socket_.setProxy(QNetworkProxy::NoProxy);
    socket_.setReadBufferSize(readAhead);
    silence_.start();
    socket_.connectToHost(request.url.host(), static_cast<quint16>(request.url.port(httpPort)));
}

void HttpConversation::begin(const QByteArray& head) {
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    handedOver_ = std::min(piece, body_.size());
    socket_.write(head + body_.first(handedOver_));
    silence_.start();
}

void HttpConversation::speakOn() {
    silence_.start();
    if (handedOver_ == body_.size() || socket_.bytesToWrite() >= piece) return;
    const auto next = std::min(piece, body_.size() - handedOver_);
    socket_.write(body_.constData() + handedOver_, next);
    handedOver_ += next;
}

void HttpConversation::listen() {
    silence_.start();
    finish(reader_.take(socket_.readAll()));
}

void HttpConversation::finish(Progress progress) {
    if (progress == Progress::More || !completion_) return;
    silence_.stop();
    socket_.disconnect(this);
    socket_.abort();
    const auto completion = std::exchange(completion_, nullptr);
    deleteLater();
    completion(progress == Progress::Whole
                   ? std::optional(HttpReply{reader_.status(), reader_.body(), std::nullopt})
                   : std::nullopt);
}

}  // namespace parlivo
