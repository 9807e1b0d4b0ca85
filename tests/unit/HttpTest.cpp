#include "EngineTest.h"
#include "support/HttpSession.h"

#include <memory>

namespace parlivo {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Manner = StubReply::Manner;

class EngineExchangeTest : public EngineTest {
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

TEST_F(EngineExchangeTest, SendsARequestAndReturnsItsReply) {
    server.on("/a%20b", StubReply::body("Ciao", 404, "text/plain"));
    HttpRequest post = request("POST");
    post.headers = {{"Content-Type", "text/plain"}};
    const auto reply = HttpSession::shared().exchange(post, seconds(20));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 404);
    EXPECT_EQ(reply->body, "Ciao");
    const StubServer::Request arrived = server.requests().front();
    EXPECT_EQ(arrived.method, "POST");
    EXPECT_EQ(arrived.header("Content-Type"), "text/plain");
    EXPECT_EQ(arrived.header("Content-Length"), "4");
    EXPECT_EQ(arrived.body, "body");
}

TEST_F(EngineExchangeTest, AReplyThatComesInSmallPiecesIsWhole) {
    const QByteArray body(300, 'x');
    server.on("/a%20b", StubReply{StubReply::body(body).bytes, Manner::OneByOne, milliseconds(0)});
    const auto reply = HttpSession::shared().exchange(request(), seconds(60));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->body, body);
}

TEST_F(EngineExchangeTest, ALargeRequestAndALargeReplyPass) {
    HttpRequest post = request("POST");
    for (int i = 0; post.body.size() < 5'000'000; ++i) post.body += QByteArray::number(i);
    server.on("/a%20b", StubReply::body(QByteArray(5'000'000, 'r')));
    const auto reply = HttpSession::shared().exchange(post, seconds(60));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->body, QByteArray(5'000'000, 'r'));
    EXPECT_EQ(server.requests().front().body, post.body);
}

TEST_F(EngineExchangeTest, WhatHasABodyIsSentOnceWhateverTheServerDoes) {
    const std::vector<StubReply> replies = {StubReply::of(Manner::CloseAtOnce),
                                            StubReply::of(Manner::ResetAtOnce),
                                            {"SSH-2.0\r\n", Manner::ThenClose, {}}};
    for (const StubReply& reply : replies) {
        server.on("/a%20b", reply);
        EXPECT_EQ(HttpSession::shared().exchange(request("POST"), seconds(20)), std::nullopt);
    }
    EXPECT_EQ(server.requests().size(), replies.size());
}

TEST_F(EngineExchangeTest, EveryRequestHasAConnectionOfItsOwn) {
    server.on("/a%20b", StubReply::body("Ciao"));
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(HttpSession::shared().exchange(request("POST"), seconds(20)));
    EXPECT_EQ(server.connections(), 5);
    EXPECT_EQ(server.requests().front().header("Connection"), "close");
}

TEST_F(EngineExchangeTest, ARedirectionIsAReplyAndNotFollowed) {
    server.on("/a%20b", StubReply{"HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n",
                                  Manner::Whole,
                                  {}});
    const auto reply = HttpSession::shared().exchange(request(), seconds(20));
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 302);
    EXPECT_TRUE(server.requests("/elsewhere").empty());
}

TEST_F(EngineExchangeTest, AReplyThatStopsHalfwayIsNoReply) {
    server.on("/a%20b", StubReply::cutOff("{}", 3));
    EXPECT_EQ(HttpSession::shared().exchange(request("POST"), seconds(20)), std::nullopt);
}

TEST_F(EngineExchangeTest, NobodyListeningIsNoReply) {
    HttpRequest nowhere;
    nowhere.url = QUrl(QStringLiteral("http://127.0.0.1:9/"));
    EXPECT_EQ(HttpSession::shared().exchange(nowhere, seconds(3600)), std::nullopt);
}

TEST_F(EngineExchangeTest, SilenceEndsWithTheRequestsTimeout) {
    server.on("/a%20b", silence());
    HttpRequest impatient = request();
    impatient.timeout = milliseconds(50);
    EXPECT_EQ(HttpSession::shared().exchange(impatient, seconds(3600)), std::nullopt);
}

TEST_F(EngineExchangeTest, ProgressDoesNotOutlastTheLimit) {
    server.on("/a%20b", StubReply{StubReply::body(QByteArray(1'000'000, 'x')).bytes, Manner::OneByOne,
                                  milliseconds(1)});
    EXPECT_EQ(HttpSession::shared().exchange(request(), milliseconds(100)), std::nullopt);
}

TEST_F(EngineExchangeTest, AServerThatTakesNoBytesIsGivenUp) {
    server.on("/a%20b", silence());
    HttpRequest post = request("POST");
    post.body = QByteArray(50'000'000, 'q');
    post.timeout = milliseconds(200);
    server.on("/a%20b", silence());
    EXPECT_EQ(HttpSession::shared().exchange(post, seconds(3600)), std::nullopt);
}

/// Sends as the rest of the program does, and waits for the completion.
HttpReply sent(HttpRequest request) {
    struct Box {
        HttpReply reply;
        Clock::Signal arrived;
    };
    auto box = std::make_shared<Box>();
    HttpSession::shared().send(std::move(request), [box](const HttpReply& reply) {
        box->reply = reply;
        box->arrived.raise();
    });
    EXPECT_TRUE(box->arrived.wait());
    return box->reply;
}

class HttpSessionTest : public EngineExchangeTest {};

TEST_F(HttpSessionTest, AResponseOfAnyStatusIsAReply) {
    for (const int status : {200, 400, 404, 500, 503}) {
        server.on("/a%20b", StubReply::body("Ciao", status, "text/plain"));
        const HttpReply reply = sent(request("POST"));
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(reply.body, "Ciao");
        EXPECT_TRUE(reply.complete()) << status;
    }
    EXPECT_EQ(server.requests().front().body, "body");
}

TEST_F(HttpSessionTest, FailuresBelowHttpAreToldApart) {
    const std::vector<std::pair<const char*, StubReply>> replies = {
        {"closed", StubReply::of(Manner::CloseAtOnce)},
        {"reset", StubReply::of(Manner::ResetAtOnce)},
        {"cut off", StubReply::cutOff("Cia", 4)},
        {"not HTTP", {"SSH-2.0\r\n", Manner::ThenClose, {}}},
        {"endless", {"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}}},
    };
    for (const auto& [name, reply] : replies) {
        server.on("/a%20b", reply);
        EXPECT_FALSE(sent(request("POST")).complete()) << name;
    }
    EXPECT_EQ(server.requests().size(), replies.size()) << "what has a body is never sent twice";
}

TEST_F(HttpSessionTest, ABodyBeyondTheLimitIsAFailure) {
    HttpRequest limited = request();
    limited.maximumReplySize = 10;
    server.on("/a%20b", StubReply::body(QByteArray(10, 'x')));
    EXPECT_EQ(sent(limited).body, QByteArray(10, 'x'));
    server.on("/a%20b", StubReply::body(QByteArray(11, 'x')));
    EXPECT_TRUE(sent(limited).transportError);
}

TEST_F(HttpSessionTest, SilenceEndsWithTheRequestsTimeout) {
    server.on("/a%20b", silence());
    HttpRequest impatient = request();
    impatient.timeout = seconds(60);
    Clock::setScale(0.001);
    EXPECT_TRUE(sent(impatient).transportError);
    Clock::setScale(0);
    EXPECT_TRUE(sent(impatient).transportError) << "a scale of nothing is no endless wait";
}

}  // namespace
}  // namespace parlivo
