// SPDX-License-Identifier: MIT
#include "support/Http.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <curl/curl.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <optional>

namespace parlivo::Http {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Http)
};

using Clock::TimePoint;
using std::chrono::milliseconds;

constexpr long mostRedirections = 50;
constexpr long pieceSize = 256 << 10;      // bytes of a body that are received at a time
constexpr qint64 longestHead = 256 << 10;  // bytes of all heads that come before a body

struct EasyDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

/// What users are told; libcurl's own texts are English and name hosts and sockets.
QString describe(CURLcode result, bool connected, long systemError) {
    switch (result) {
        case CURLE_COULDNT_CONNECT:
            return systemError == ECONNREFUSED ? Texts::tr("il server rifiuta la connessione")
                                               : Texts::tr("errore di rete");
        case CURLE_PARTIAL_FILE:
        case CURLE_GOT_NOTHING:
        case CURLE_RECV_ERROR:
        case CURLE_SEND_ERROR:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return Texts::tr("connessione interrotta dal server");
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return Texts::tr("server non trovato: controlla la connessione");
        case CURLE_OPERATION_TIMEDOUT:
            return Texts::tr("il server non risponde");
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
            return Texts::tr("connessione sicura non riuscita");
        case CURLE_TOO_MANY_REDIRECTS:
            return Texts::tr("troppi reindirizzamenti");
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            // Also what is no HTTP, and a redirection to where none may lead.
            return connected ? Texts::tr("errore di rete") : Texts::tr("indirizzo non valido");
        case CURLE_ABORTED_BY_CALLBACK:
        case CURLE_WRITE_ERROR:
            return Texts::tr("richiesta annullata");
        default:
            return Texts::tr("errore di rete");
    }
}

bool isLoopback(const QUrl& url) {
    static const QRegularExpression address(
        QRegularExpression::anchoredPattern(QStringLiteral(R"(localhost|127(\.\d+){3}|::1)")));
    return address.match(url.host()).hasMatch();
}

/// One request under way, on libcurl's handles.
class Transfer {
  public:
    Transfer(const HttpRequest& request, const Receiver& receive)
        : firstHeader_(request.firstHeader), receive_(receive) {
        // What libcurl sets up once for the process, which it may do on any thread.
        static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
        easy_.reset(curl_easy_init());
        multi_.reset(curl_multi_init());
        if (ready != CURLE_OK || !easy_ || !multi_) qFatal("libcurl cannot be set up");
        chooseServer(request);
        fill(request);
        set(CURLOPT_WRITEFUNCTION, &Transfer::takeBody);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &Transfer::takeHead);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_BUFFERSIZE, pieceSize);
        set(CURLOPT_NOSIGNAL, 1L);
        // A look-up of a host that nobody answers is left behind, not waited for.
        set(CURLOPT_QUICK_EXIT, 1L);
        curl_multi_add_handle(multi_.get(), easy_.get());
    }
    ~Transfer() { curl_multi_remove_handle(multi_.get(), easy_.get()); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    HttpReply run(const HttpRequest& request, const StopToken& calledOff) {
        const auto wake = [this] { curl_multi_wakeup(multi_.get()); };
        const StopCallback wakesUp(calledOff, wake);
        const CURLcode result = perform(request, calledOff);
        HttpReply reply;
        reply.status = static_cast<int>(number<long>(CURLINFO_RESPONSE_CODE));
        reply.timedOut = result == CURLE_OPERATION_TIMEDOUT;
        reply.statedLength = number<curl_off_t>(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
        if (result != CURLE_OK) {
            const QString text = describe(result, number<curl_off_t>(CURLINFO_CONNECT_TIME_T) > 0,
                                          number<long>(CURLINFO_OS_ERRNO));
            reply.failure = Error(QStringLiteral("Network"), result, text);
        }
        return reply;
    }

  private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        if (curl_easy_setopt(easy_.get(), option, value) != CURLE_OK) qFatal("libcurl lacks %d", option);
    }
    template <typename Value>
    Value number(CURLINFO info) const {
        Value value = 0;
        curl_easy_getinfo(easy_.get(), info, &value);
        return value;
    }

    void chooseServer(const HttpRequest& request) {
        const bool secure = request.url.scheme() == QStringLiteral("https");
        set(CURLOPT_URL, request.url.toEncoded(QUrl::RemoveFragment).constData());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_REDIR_PROTOCOLS_STR, secure ? "https" : "http,https");
        set(CURLOPT_FOLLOWLOCATION, request.redirects == HttpRequest::Redirects::Follow ? 1L : 0L);
        set(CURLOPT_MAXREDIRS, mostRedirections);
        if (isLoopback(request.url)) set(CURLOPT_PROXY, "");
        if (const QByteArray file = qgetenv("SSL_CERT_FILE"); !file.isEmpty())
            set(CURLOPT_CAINFO, file.constData());
        set(CURLOPT_TCP_NODELAY, 1L);
        // A reused connection may be found closed, and the request is then sent a second time.
        set(CURLOPT_FRESH_CONNECT, 1L);
        set(CURLOPT_FORBID_REUSE, 1L);
    }

    void fill(const HttpRequest& request) {
        set(CURLOPT_USERAGENT, "Parlivo");
        if (request.method == "POST") {
            set(CURLOPT_POST, 1L);
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
            set(CURLOPT_POSTFIELDS, request.body.constData());  // not copied
        }
        addHeader("Connection: close");
        // No question in advance whether the body is welcome.
        addHeader("Expect:");
        for (const auto& [name, value] : request.headers) addHeader(name + ": " + value);
        set(CURLOPT_HTTPHEADER, headers_.get());
    }

    void addHeader(const QByteArray& line) {
        curl_slist* longer = curl_slist_append(headers_.get(), line.constData());
        static_cast<void>(headers_.release());
        headers_.reset(longer);
    }

    CURLcode perform(const HttpRequest& request, const StopToken& calledOff) {
        const auto end = request.limit ? Clock::Deadline(*request.limit).end() : TimePoint::max();
        const auto silence = std::max(Clock::scaled(request.timeout), milliseconds(1));
        auto lastProgress = Clock::now();
        qint64 reached = progress();
        while (!calledOff.stopRequested()) {
            int running = 0;
            curl_multi_perform(multi_.get(), &running);
            if (running == 0) return outcome();
            const auto now = Clock::now();
            if (const qint64 further = progress(); further != reached) {
                reached = further;
                lastProgress = now;
            }
            const auto giveUp = std::min(end, lastProgress + silence);
            if (now >= giveUp) return CURLE_OPERATION_TIMEDOUT;
            curl_multi_poll(multi_.get(), nullptr, 0, rounded(giveUp - now), nullptr);
        }
        return CURLE_ABORTED_BY_CALLBACK;
    }

    static int rounded(Clock::Duration duration) {
        const auto whole = std::chrono::ceil<milliseconds>(duration).count();
        return static_cast<int>(std::min<qint64>(whole, std::numeric_limits<int>::max()));
    }

    /// A number that is another after every step of the exchange.
    qint64 progress() const {
        return number<curl_off_t>(CURLINFO_CONNECT_TIME_T) + number<curl_off_t>(CURLINFO_SIZE_UPLOAD_T) +
               number<curl_off_t>(CURLINFO_SIZE_DOWNLOAD_T) + headBytes_;
    }

    CURLcode outcome() const {
        int waiting = 0;
        const CURLMsg* message = curl_multi_info_read(multi_.get(), &waiting);
        return message != nullptr ? message->data.result : CURLE_RECV_ERROR;
    }

    static std::size_t takeBody(const char* bytes, std::size_t, std::size_t count, void* self) {
        Transfer& transfer = *static_cast<Transfer*>(self);
        // Looked up once: a large body comes in tens of thousands of pieces.
        if (!transfer.head_) transfer.head_ = transfer.readHead();
        const QByteArrayView piece(bytes, static_cast<qsizetype>(count));
        return transfer.receive_(piece, *transfer.head_) ? count : CURL_WRITEFUNC_ERROR;
    }

    Head readHead() const {
        Head head{number<curl_off_t>(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T), {}};
        curl_header* found = nullptr;
        if (!firstHeader_.isEmpty() && curl_easy_header(easy_.get(), firstHeader_.constData(), 0,
                                                        CURLH_HEADER, 0, &found) == CURLHE_OK) {
            head.firstHeader = found->value;
        }
        return head;
    }

    /// libcurl keeps every line of every head.
    static std::size_t takeHead(const char*, std::size_t, std::size_t count, void* self) {
        Transfer& transfer = *static_cast<Transfer*>(self);
        transfer.headBytes_ += static_cast<qint64>(count);
        return transfer.headBytes_ <= longestHead ? count : CURL_WRITEFUNC_ERROR;
    }

    const QByteArray firstHeader_;
    const Receiver& receive_;
    std::optional<Head> head_;
    qint64 headBytes_ = 0;
    std::unique_ptr<curl_slist, ListDeleter> headers_;
    std::unique_ptr<CURLM, MultiDeleter> multi_;
    std::unique_ptr<CURL, EasyDeleter> easy_;
};

}  // namespace

HttpReply exchange(const HttpRequest& request, const StopToken& calledOff) {
    QByteArray body;
    bool tooLong = false;
    const Receiver gather = [&](QByteArrayView bytes, const Head&) {
        tooLong = body.size() + bytes.size() > request.maximumReplySize;
        if (!tooLong) body.append(bytes);
        return !tooLong;
    };
    HttpReply reply = download(request, gather, calledOff);
    if (tooLong)
        reply.failure =
            Error(QStringLiteral("Network"), CURLE_FILESIZE_EXCEEDED, Texts::tr("risposta troppo lunga"));
    else
        reply.body = std::move(body);
    return reply;
}

HttpReply download(const HttpRequest& request, const Receiver& receive, const StopToken& calledOff) {
    return Transfer(request, receive).run(request, calledOff);
}

}  // namespace parlivo::Http
