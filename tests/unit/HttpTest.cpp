// SPDX-License-Identifier: MIT
#include "EngineTest.h"
#include "support/Http.h"
#include "support/Worker.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <memory>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Manner = StubReply::Manner;

/// A port where connections are taken up and no byte is ever read.
class Hole {
  public:
    Hole() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_TRUE(bind(listener_, plain, size) == 0 && listen(listener_, 8) == 0 &&
                    getsockname(listener_, plain, &size) == 0);
        port_ = ntohs(address.sin_port);
    }
    ~Hole() { close(listener_); }
    Hole(const Hole&) = delete;
    Hole& operator=(const Hole&) = delete;

    int port() const { return port_; }

  private:
    const int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port_ = 0;
};

class HttpTest : public EngineTest {
  protected:
    HttpRequest request(const QByteArray& method = "GET") const {
        HttpRequest result;
        result.url = QUrl(QStringLiteral("http://127.0.0.1:%1/a%20b").arg(server.port()));
        result.method = method;
        if (method == "POST") result.body = "body";
        return result;
    }

    StubServer server;
};

TEST_F(HttpTest, SendsARequestAndReturnsItsReply) {
    server.on("/a%20b", StubReply::body("Ciao", 404, "text/plain"));
    HttpRequest post = request("POST");
    post.headers = {{"Content-Type", "text/plain"}};
    const HttpReply reply = Http::exchange(post);
    ASSERT_TRUE(reply.complete());
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(reply.body, "Ciao");
    const StubServer::Request arrived = server.requests().front();
    EXPECT_EQ(arrived.method, "POST");
    EXPECT_EQ(arrived.header("Content-Type"), "text/plain");
    EXPECT_EQ(arrived.header("Content-Length"), "4");
    EXPECT_EQ(arrived.body, "body");
    EXPECT_EQ(arrived.header("User-Agent"), "Parlivo");
}

TEST_F(HttpTest, AReplyThatComesInSmallPiecesIsWhole) {
    const QByteArray body(300, 'x');
    server.on("/a%20b", StubReply{StubReply::body(body).bytes, Manner::OneByOne, milliseconds(0)});
    const HttpReply reply = Http::exchange(request());
    ASSERT_TRUE(reply.complete());
    EXPECT_EQ(reply.body, body);
}

TEST_F(HttpTest, ALargeRequestAndALargeReplyPass) {
    HttpRequest post = request("POST");
    for (int i = 0; post.body.size() < 5'000'000; ++i) post.body += QByteArray::number(i);
    server.on("/a%20b", StubReply::body(QByteArray(5'000'000, 'r')));
    const HttpReply reply = Http::exchange(post);
    ASSERT_TRUE(reply.complete());
    EXPECT_EQ(reply.body, QByteArray(5'000'000, 'r'));
    EXPECT_EQ(server.requests().front().body, post.body);
    EXPECT_FALSE(server.requests().front().raw.contains("Expect")) << "nobody is asked whether it is welcome";
}

TEST_F(HttpTest, WhatHasABodyIsSentOnceWhateverTheServerDoes) {
    const std::vector<StubReply> replies = {StubReply::of(Manner::CloseAtOnce),
                                            StubReply::of(Manner::ResetAtOnce),
                                            {"SSH-2.0\r\n", Manner::ThenClose, {}}};
    for (const StubReply& reply : replies) {
        server.on("/a%20b", reply);
        EXPECT_TRUE(Http::exchange(request("POST")).failure);
    }
    EXPECT_EQ(server.requests().size(), replies.size());
}

TEST_F(HttpTest, EveryRequestHasAConnectionOfItsOwn) {
    server.on("/a%20b", StubReply::body("Ciao"));
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(Http::exchange(request("POST")).complete());
    EXPECT_EQ(server.connections(), 5);
    EXPECT_EQ(server.requests().front().header("Connection"), "close");
}

TEST_F(HttpTest, ARedirectionIsAReplyAndNotFollowed) {
    server.on("/a%20b", StubReply{"HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n",
                                  Manner::Whole,
                                  {}});
    HttpRequest straight = request();
    straight.redirects = HttpRequest::Redirects::Refuse;
    const HttpReply reply = Http::exchange(straight);
    ASSERT_TRUE(reply.complete());
    EXPECT_EQ(reply.status, 302);
    EXPECT_TRUE(server.requests("/elsewhere").empty());
}

/// What users would be told.
QString failureOf(const HttpRequest& request) {
    const HttpReply reply = Http::exchange(request);
    EXPECT_FALSE(reply.complete());
    return reply.failure ? reply.failure->localizedDescription() : QString();
}

TEST_F(HttpTest, AReplyThatStopsHalfwayIsAFailure) {
    server.on("/a%20b", StubReply::cutOff("{}", 3));
    EXPECT_EQ(failureOf(request("POST")), QStringLiteral("connessione interrotta dal server"));
}

TEST_F(HttpTest, NobodyListeningIsAFailure) {
    HttpRequest nowhere;
    nowhere.url = QUrl(QStringLiteral("http://127.0.0.1:9/"));
    EXPECT_EQ(failureOf(nowhere), QStringLiteral("il server rifiuta la connessione"));
}

TEST_F(HttpTest, WhatIsNoAddressOfTheWebIsAFailure) {
    for (const char* address :
         {"file:///etc/hostname", "ftp://127.0.0.1/a", "gopher://127.0.0.1/", "http://", ""}) {
        HttpRequest strange;
        strange.url = QUrl(QString::fromLatin1(address));
        EXPECT_EQ(failureOf(strange), QStringLiteral("indirizzo non valido")) << address;
    }
}

TEST_F(HttpTest, SilenceEndsWithTheRequestsTimeout) {
    server.on("/a%20b", silence());
    HttpRequest impatient = request();
    for (const double scale : {0.001, 0.0}) {
        Clock::setScale(scale);
        EXPECT_EQ(failureOf(impatient), QStringLiteral("il server non risponde")) << scale;
    }
}

TEST_F(HttpTest, ProgressDoesNotOutlastTheLimit) {
    server.on("/a%20b", StubReply{StubReply::body(QByteArray(1'000'000, 'x')).bytes, Manner::OneByOne,
                                  milliseconds(1)});
    HttpRequest limited = request();
    limited.limit = milliseconds(100);
    EXPECT_EQ(failureOf(limited), QStringLiteral("il server non risponde"));
}

TEST_F(HttpTest, AServerThatTakesNoBytesIsGivenUp) {
    const Hole hole;
    HttpRequest post = request("POST");
    post.url.setPort(hole.port());
    post.body = QByteArray(50'000'000, 'q');
    post.timeout = milliseconds(200);
    EXPECT_EQ(failureOf(post), QStringLiteral("il server non risponde"));
}

TEST_F(HttpTest, ABodyBeyondTheLimitIsAFailure) {
    HttpRequest limited = request();
    limited.maximumReplySize = 10;
    server.on("/a%20b", StubReply::body(QByteArray(10, 'x')));
    EXPECT_EQ(Http::exchange(limited).body, QByteArray(10, 'x'));
    server.on("/a%20b", StubReply::body(QByteArray(11, 'x')));
    EXPECT_EQ(failureOf(limited), QStringLiteral("risposta troppo lunga"));
    server.on("/a%20b", StubReply{"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}});
    EXPECT_EQ(failureOf(request()), QStringLiteral("risposta troppo lunga"));
}

TEST_F(HttpTest, AHeadWithoutEndIsAFailure) {
    QByteArray head = "HTTP/1.1 200 OK\r\n";
    while (head.size() < 2'000'000) head += "X-More: and more of it\r\n";
    server.on("/a%20b", StubReply{head + "\r\n", Manner::ThenClose, {}});
    EXPECT_TRUE(Http::exchange(request()).failure);
}

TEST_F(HttpTest, AResponseOfAnyStatusIsAReply) {
    for (const int status : {200, 400, 404, 500, 503}) {
        server.on("/a%20b", StubReply::body("Ciao", status, "text/plain"));
        const HttpReply reply = Http::exchange(request("POST"));
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(reply.body, "Ciao");
        EXPECT_TRUE(reply.complete()) << status;
    }
}

TEST_F(HttpTest, ARedirectionIsFollowedWhereThatIsWanted) {
    server.on("/a%20b",
              StubReply{"HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 5\r\n\r\nmoved",
                        Manner::Whole,
                        {}});
    server.on("/elsewhere", StubReply::body("Ciao"));
    EXPECT_EQ(Http::exchange(request()).body, "Ciao");
    server.on("/a%20b",
              StubReply{"HTTP/1.1 302 Found\r\nLocation: file:///etc/hostname\r\nContent-Length: 0\r\n\r\n",
                        Manner::Whole,
                        {}});
    EXPECT_EQ(failureOf(request()), QStringLiteral("errore di rete")) << "but not out of the web";
}

TEST_F(HttpTest, TheLoopbackAddressIsReachedWithoutAProxy) {
    server.on("/a%20b", StubReply::body("Ciao"));
    qputenv("http_proxy", "http://127.0.0.1:9");
    for (const QString& host : {QStringLiteral("127.0.0.1"), QStringLiteral("localhost")}) {
        HttpRequest local = request();
        local.url.setHost(host);
        EXPECT_EQ(Http::exchange(local).body, "Ciao") << host.toStdString();
    }
    HttpRequest other = request();
    other.url.setHost(QStringLiteral("parlivo.invalid"));
    EXPECT_EQ(failureOf(other), QStringLiteral("il server rifiuta la connessione"))
        << "that is the proxy's word";
    qunsetenv("http_proxy");
    EXPECT_EQ(failureOf(other), QStringLiteral("server non trovato: controlla la connessione"));
}

TEST_F(HttpTest, TheEndOfTheProgramEndsARequestAtOnce) {
    server.on("/a%20b", silence());
    std::thread pipeline([this] { EXPECT_TRUE(Http::exchange(request()).failure); });
    EXPECT_TRUE(server.waitForRequests("/a%20b", 1));
    Clock::interruptAll();
    pipeline.join();
    EXPECT_TRUE(Http::exchange(request()).failure) << "and nothing is sent any more";
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST_F(HttpTest, AWorkersEndEndsItsRequestAtOnce) {
    server.on("/a%20b", silence());
    Clock::Signal ended;
    {
        const Worker worker(QStringLiteral("test"), [&](const StopToken& calledOff) {
            EXPECT_TRUE(Http::exchange(request(), calledOff).failure);
            ended.raise();
        });
        EXPECT_TRUE(server.waitForRequests("/a%20b", 1));
    }
    EXPECT_TRUE(ended.wait());
}

TEST_F(HttpTest, AReceiverThatHasEnoughEndsTheRequest) {
    server.on("/a%20b", StubReply{"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}});
    qint64 received = 0;
    const HttpReply reply =
        Http::download(request(), [&received](QByteArrayView bytes, const Http::Head& head) {
            EXPECT_EQ(head.statedLength, -1);
            received += bytes.size();
            return received < 5'000'000;
        });
    EXPECT_TRUE(reply.failure);
    EXPECT_EQ(reply.status, 200);
    EXPECT_LT(received, 6'000'000);
}

/// A job that its Worker cannot end, as a disk that does not answer makes them.
TEST(WorkerTest, ABlockedJobDoesNotBlockOthers) {
    struct Gate {
        std::atomic<bool> entered = false;
        std::atomic<bool> open = false;
        std::atomic<bool> left = false;
    };
    static Gate gate;
    {
        const Worker worker(QStringLiteral("test"), [](const StopToken&) {
            gate.entered = true;
            gate.entered.notify_all();
            gate.open.wait(false);
            gate.left = true;
        });
        gate.entered.wait(false);
    }
    Worker::endAll(milliseconds(1));
    EXPECT_FALSE(gate.left);
    gate.open = true;
    gate.open.notify_all();
    Worker::endAll(seconds(60));
    EXPECT_TRUE(gate.left);
}

TEST(WorkerTest, AJobsVariablesAreDestroyedAtItsEnd) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    const Worker worker(QStringLiteral("test"), [held = std::move(held)](const StopToken&) {});
    Worker::endAll(seconds(60));
    EXPECT_TRUE(watch.expired());
}

}  // namespace
}  // namespace parlivo
