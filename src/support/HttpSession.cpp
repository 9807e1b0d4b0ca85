#include "support/HttpSession.h"

#include "support/Clock.h"
#include "support/HttpConversation.h"

#include <QHostAddress>
#include <QIODevice>
#include <QMutex>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <algorithm>
#include <memory>
#include <utility>

namespace parlivo {

namespace {

/// A server that sends faster than its reply is read has to wait.
constexpr qint64 readAhead = 1 << 20;

std::unique_ptr<HttpSession>& sharedSlot() {
    static std::unique_ptr<HttpSession> session;
    return session;
}

QMutex& sharedLock() {
    static QMutex mutex;
    return mutex;
}

/// The loopback address is reached directly, whatever http_proxy says without no_proxy.
class LoopbackAwareProxies : public QNetworkProxyFactory {
  public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        const QString host = query.peerHostName();
        if (host == QStringLiteral("localhost") || QHostAddress(host).isLoopback()) {
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        }
        return systemProxyForQuery(query);
    }
};

/// A body that cannot be rewound. Qt sends a request again, up to three times, when the server hangs up, POST
/// included; with such a body it cannot, and reports the failure.
class OneWayBody : public QIODevice {
  public:
    explicit OneWayBody(QByteArray bytes) : bytes_(std::move(bytes)) { open(QIODevice::ReadOnly); }

    bool isSequential() const override { return true; }
    bool seek(qint64) override { return false; }
    bool atEnd() const override { return bytesAvailable() == 0; }
    qint64 bytesAvailable() const override { return bytes_.size() - taken_ + QIODevice::bytesAvailable(); }

  protected:
    qint64 readData(char* data, qint64 limit) override {
        const qint64 count = std::min<qint64>(limit, bytes_.size() - taken_);
        std::copy_n(bytes_.cbegin() + taken_, count, data);
        taken_ += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

  private:
    const QByteArray bytes_;
    qint64 taken_ = 0;
};

QNetworkRequest toQt(const HttpRequest& request) {
    QNetworkRequest result(request.url);
    for (const auto& [name, value] : request.headers) result.setRawHeader(name, value);
    result.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Parlivo"));
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    if (request.redirects == HttpRequest::Redirects::Refuse) {
        result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    }
    // 0 would mean no limit.
    const auto timeout = std::max(Clock::scaled(request.timeout), std::chrono::milliseconds(1));
    result.setTransferTimeout(static_cast<int>(timeout.count()));
    return result;
}

QNetworkReply* start(QNetworkAccessManager& manager, const HttpRequest& request) {
    QNetworkRequest head = toQt(request);
    if (request.body.isEmpty()) return manager.sendCustomRequest(head, request.method);
    head.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    head.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    auto body = std::make_unique<OneWayBody>(request.body);
    QNetworkReply* reply = manager.sendCustomRequest(head, request.method, body.get());
    body.release()->setParent(reply);
    return reply;
}

/// Gathers a reply's body up to the request's limit.
void gather(QNetworkReply& reply, HttpReply& result, qint64 limit) {
    if (result.transportError) return;
    result.body += reply.read(limit + 1 - result.body.size());
    if (result.body.size() <= limit) return;
    result.transportError = QStringLiteral("risposta troppo lunga");
    result.body.clear();
    reply.abort();
}

void conclude(const QNetworkReply& reply, HttpReply& result) {
    result.status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (!result.transportError && HttpSession::isTransportError(reply.error()))
        result.transportError = reply.errorString();
}

}  // namespace

// Of the network thread alone.
struct HttpSession::Ticket {
    QPointer<HttpConversation> conversation;
    bool calledOff = false;
};

HttpSession& HttpSession::shared() {
    const QMutexLocker lock(&sharedLock());
    if (!sharedSlot()) sharedSlot().reset(new HttpSession);
    return *sharedSlot();
}

void HttpSession::end() {
    const QMutexLocker lock(&sharedLock());
    sharedSlot().reset();
}

HttpSession::HttpSession() {
    thread_.setObjectName(QStringLiteral("parlivo.network"));
    moveToThread(&thread_);
    connect(&thread_, &QThread::started, this, [this] {
        manager_ = new QNetworkAccessManager(this);
        manager_->setProxyFactory(new LoopbackAwareProxies);
    });
    // Here and not in the destructor: the manager and the conversations belong to the network thread.
    connect(&thread_, &QThread::finished, this, [this] { qDeleteAll(QObjectList(children())); });
    thread_.start();
}

HttpSession::~HttpSession() {
    thread_.quit();
    thread_.wait();
}

void HttpSession::send(HttpRequest request, Completion completion) {
    post([this, request = std::move(request), completion = std::move(completion)] {
        begin(request, completion);
    });
}

std::optional<HttpReply> HttpSession::exchange(HttpRequest request, std::chrono::milliseconds limit) {
    struct Box {
        std::optional<HttpReply> reply;
        Clock::Signal arrived;
    };
    const Clock::Deadline deadline(limit);
    auto box = std::make_shared<Box>();
    auto ticket = std::make_shared<Ticket>();
    const auto completion = [box](std::optional<HttpReply> reply) {
        box->reply = std::move(reply);
        box->arrived.raise();
    };
    post([this, request = std::move(request), completion, ticket] {
        if (!ticket->calledOff) ticket->conversation = new HttpConversation(request, completion, this);
    });
    if (box->arrived.waitUntil(deadline.end())) return std::move(box->reply);
    post([ticket] {
        ticket->calledOff = true;
        delete ticket->conversation;
    });
    return std::nullopt;
}

void HttpSession::onNetworkThread(std::function<void(QNetworkAccessManager&)> job) {
    post([this, job = std::move(job)] { job(*manager_); });
}

bool HttpSession::isTransportError(QNetworkReply::NetworkError error) {
    if (error == QNetworkReply::NoError) return false;
    return error < QNetworkReply::ContentAccessDenied || error == QNetworkReply::ContentReSendError ||
           error == QNetworkReply::ProtocolUnknownError || error == QNetworkReply::ProtocolFailure;
}

void HttpSession::begin(const HttpRequest& request, const Completion& completion) {
    QNetworkReply* reply = start(*manager_, request);
    reply->setReadBufferSize(readAhead);
    auto result = std::make_shared<HttpReply>();
    const auto take = [reply, result, limit = request.maximumReplySize] {
        if (reply->isOpen()) gather(*reply, *result, limit);
    };
    connect(reply, &QNetworkReply::readyRead, reply, take);
    connect(reply, &QNetworkReply::finished, reply, [reply, result, take, completion] {
        take();
        conclude(*reply, *result);
        completion(*result);
        reply->deleteLater();
    });
}

}  // namespace parlivo
