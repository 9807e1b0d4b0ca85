// SPDX-License-Identifier: MIT
#include "support/Clock.h"
#include "support/Http.h"
#include "support/StubServer.h"
#include "support/Waiting.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

namespace parlivo {
namespace {

constexpr int port = 8443;

QUrl secure(const QString& path) {
    return QUrl(QStringLiteral("https://127.0.0.1:%1").arg(port) + path);
}

HttpRequest request(const QUrl& url) {
    HttpRequest result;
    result.url = url;
    return result;
}

double residentMegabytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().split(' ').at(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) /
           (1 << 20);
}

/// Servers with a certificate that was made for the test.
class SecureTransferTest : public testing::Test {
  protected:
    SecureTransferTest() {
        EXPECT_EQ(
            QProcess::execute(QStringLiteral("openssl"),
                              {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                               QStringLiteral("ec"), QStringLiteral("-pkeyopt"),
                               QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                               QStringLiteral("-subj"), QStringLiteral("/CN=prova"),
                               QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1"),
                               QStringLiteral("-keyout"), key(), QStringLiteral("-out"), certificate()}),
            0);
        trust(certificate());
    }
    ~SecureTransferTest() override {
        qunsetenv("SSL_CERT_FILE");
        server.kill();
        server.waitForFinished();
    }
    SecureTransferTest(const SecureTransferTest&) = delete;
    SecureTransferTest& operator=(const SecureTransferTest&) = delete;

    QString certificate() const { return folder.filePath(QStringLiteral("certificate.pem")); }
    QString key() const { return folder.filePath(QStringLiteral("key.pem")); }
    static void trust(const QString& certificates) { qputenv("SSL_CERT_FILE", certificates.toUtf8()); }

    void start(const QString& program, const QStringList& arguments) {
        server.start(program, arguments);
        ASSERT_TRUE(server.waitForStarted()) << program.toStdString();
        ASSERT_TRUE(desktop::waitFor(
            [] { return Http::exchange(request(secure(QStringLiteral("/")))).status != 0; }));
    }
    void startSecure() {
        start(QStringLiteral(PARLIVO_SECURE_SERVER), {QString::number(port), certificate(), key()});
    }
    /// Speaks HTTP/2 and nothing else.
    void startHttp2() {
        start(QStringLiteral("nghttpd"), {QStringLiteral("--address=127.0.0.1"), QStringLiteral("--htdocs"),
                                          folder.path(), QString::number(port), key(), certificate()});
    }

    QTemporaryDir folder;
    QProcess server;
};

TEST_F(SecureTransferTest, AFileOverHttp2TakesLittleMemoryHoweverSlowlyItIsTaken) {
    constexpr qint64 size = 400 << 20;
    QFile file(folder.filePath(QStringLiteral("modello.bin")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(size));  // holes take no space
    startHttp2();
    qint64 received = 0;
    double most = 0;
    const double before = residentMegabytes();
    const HttpReply reply = Http::download(request(secure(QStringLiteral("/modello.bin"))),
                                           [&](QByteArrayView bytes, const Http::Head& head) {
                                               EXPECT_EQ(head.statedLength, size);
                                               // Long enough for the server to send as much as it is allowed
                                               // to.
                                               if (received == 0)
                                                   Clock::sleepFor(std::chrono::milliseconds(500));
                                               received += bytes.size();
                                               most = std::max(most, residentMegabytes());
                                               return true;
                                           });
    EXPECT_TRUE(reply.complete());
    EXPECT_EQ(received, size);
    EXPECT_LT(most - before, 48) << "MB";
}

TEST_F(SecureTransferTest, AStrangersCertificateIsRefused) {
    startSecure();
    qunsetenv("SSL_CERT_FILE");
    const HttpReply reply = Http::exchange(request(secure(QStringLiteral("/"))));
    EXPECT_EQ(reply.status, 0);
    ASSERT_TRUE(reply.failure);
    EXPECT_EQ(reply.failure->localizedDescription(), QStringLiteral("connessione sicura non riuscita"));
}

TEST_F(SecureTransferTest, ACertificateForAnotherNameIsRefused) {
    startSecure();
    QUrl other = secure(QStringLiteral("/"));
    other.setHost(QStringLiteral("localhost"));
    const HttpReply reply = Http::exchange(request(other));
    ASSERT_TRUE(reply.failure);
    EXPECT_EQ(reply.failure->localizedDescription(), QStringLiteral("connessione sicura non riuscita"));
}

TEST_F(SecureTransferTest, WhatBeganSecureStaysSecure) {
    StubServer plain;
    plain.on("/", StubReply::body("in clear"));
    startSecure();
    const QString open = QStringLiteral("http://127.0.0.1:%1/").arg(plain.port());
    const HttpReply reply = Http::exchange(request(secure(QStringLiteral("/to?") + open)));
    EXPECT_FALSE(reply.complete());
    EXPECT_EQ(plain.connections(), 0);
    EXPECT_EQ(Http::exchange(request(secure(QStringLiteral("/to?/here")))).body, "Ciao");
    plain.on("/", StubReply{"HTTP/1.1 302 Found\r\nLocation: " + secure(QStringLiteral("/")).toEncoded() +
                                "\r\nContent-Length: 0\r\n\r\n",
                            StubReply::Manner::Whole,
                            {}});
    EXPECT_EQ(Http::exchange(request(QUrl(open))).body, "Ciao") << "the other way round is welcome";
}

}  // namespace
}  // namespace parlivo
