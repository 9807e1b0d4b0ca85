// SPDX-License-Identifier: MIT
#include "DownloaderFixture.h"
#include "support/AskedWaits.h"

#include <QCryptographicHash>

namespace parlivo {
namespace {

using namespace downloads;
using Manner = StubReply::Manner;

TEST_F(DownloaderTest, TheFileArrivesWholeAndIsLogged) {
    server.on(path, whole());
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_TRUE(ModelCatalog::isDownloaded(entry()));
    EXPECT_EQ(filesIn(Config::modelsDir()), QStringList(fileName));
    EXPECT_EQ(logged(), QStringList({u"download avviato: "_s + fileName,
                                     u"download completato e verificato: "_s + fileName}));
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back().fraction, 1.0);
    EXPECT_EQ(progress.back().written, fileSize);
    EXPECT_EQ(progress.back().total, fileSize);
    EXPECT_EQ(ends.size(), 1U);
}

/// Where the connection breaks, in bytes of the body.
class CutConnection : public DownloaderTest, public testing::WithParamInterface<qint64> {};

TEST_P(CutConnection, IsTriedAgainFromTheBeginning) {
    server.on(path, {cutAt(GetParam()), whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(logged(), retries(1, u"connessione interrotta dal server"_s)
                            << u"download completato e verificato: "_s + fileName);
    for (const auto& request : server.requests(path)) EXPECT_EQ(request.header("Range"), QByteArray());
}

TEST_P(CutConnection, IsGivenUpAfterFourAttempts) {
    server.on(path, cutAt(GetParam()));
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), u"connessione interrotta dal server"_s);
    EXPECT_EQ(logged(), retries(3, failure())) << "the last failure is not logged";
    EXPECT_EQ(ends.size(), 1U);
    expectNothingLeft();
}

TEST_P(CutConnection, WithoutALengthIsAnIncompleteFile) {
    server.on(path, unmeasured(model().left(GetParam())));
    expectRefused(u"Download incompleto (%1MB su 2MB)"_s.arg(GetParam() >> 20));
}

INSTANTIATE_TEST_SUITE_P(At, CutConnection, testing::Values(qint64{0}, percent, 50 * percent, 99 * percent),
                         [](const auto& cut) { return std::to_string(cut.param / percent) + "Percent"; });

TEST_F(DownloaderTest, ABrokenConnectionIsTriedAgainToo) {
    StubReply reset = cutAt(50 * percent);
    reset.manner = Manner::ThenReset;
    server.on(path, {reset, StubReply::of(Manner::CloseAtOnce), StubReply::of(Manner::ResetAtOnce), whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(logged(), retries(3, u"connessione interrotta dal server"_s)
                            << u"download completato e verificato: "_s + fileName);
    EXPECT_EQ(ends.size(), 1U);
}

TEST_F(DownloaderTest, AServerMayBeSilentForAMinuteAndIsAskedAgainAfterThreeSeconds) {
    server.on(path, {StubReply::of(Manner::CloseAtOnce), StubReply::of(Manner::CloseAtOnce), whole()});
    const AskedWaits asked;
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_EQ(asked.count(std::chrono::seconds(60)), 3);
    EXPECT_EQ(asked.count(std::chrono::seconds(3)), 2);
    EXPECT_EQ(asked.longest(), std::chrono::seconds(60));
}

TEST_F(DownloaderTest, NoServerIsAskedMoreThanFourTimes) {
    for (const Manner manner : {Manner::CloseAtOnce, Manner::ResetAtOnce}) {
        ends.clear();
        const StubServer refusing(0, {{path, [manner](const auto&) { return StubReply::of(manner); }}});
        ModelCatalog::Entry wanted = entry();
        wanted.url.setPort(refusing.port());
        EXPECT_FALSE(fetch(wanted));
        EXPECT_EQ(failure(), u"connessione interrotta dal server"_s);
        EXPECT_EQ(refusing.requests(path).size(), 4U);
        EXPECT_EQ(refusing.connections(), 4);
    }
}

TEST_F(DownloaderTest, AServerThatFallsSilentIsGivenUp) {
    StubReply silent = cutAt(50 * percent);
    silent.manner = Manner::ThenNothing;
    server.on(path, {silent, whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_EQ(logged().filter(u"fallito (il server non risponde), retry"_s).size(), 1);
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderTest, ASlowServerIsNotGivenUp) {
    // All in all longer than the time without progress, which itself is longer than any pause of a busy
    // machine.
    Clock::setScale(0.05);
    const QByteArray body = model().left(300);
    server.on(path, StubReply{whole(body).bytes, Manner::OneByOne, std::chrono::milliseconds(12)});
    ASSERT_TRUE(fetch(entry(300))) << failure().toStdString();
    EXPECT_TRUE(contents() == body);
    EXPECT_EQ(server.requests(path).size(), 1U);
}

TEST_F(DownloaderTest, WithoutAServerTheDownloadFails) {
    ModelCatalog::Entry nowhere = entry();
    nowhere.url.setPort(1);
    EXPECT_FALSE(fetch(nowhere));
    EXPECT_EQ(failure(), u"il server rifiuta la connessione"_s);
    EXPECT_EQ(logged(), retries(3, failure()));
    expectNothingLeft();
}

TEST_F(DownloaderTest, AnErrorPageIsNoModel) {
    const QByteArray page = "<html><body>Non trovato</body></html>";
    for (const int status : {200, 404, 403, 500, 503}) {
        ends.clear();
        QFile::remove(Log::path());
        server.on(path, StubReply::body(page, status, "text/html"));
        SCOPED_TRACE(status);
        expectRefused(u"Download incompleto (0MB su 2MB)"_s);
    }
}

TEST_F(DownloaderTest, AnErrorPageOfTheRightSizeIsTaken) {
    // The size is all that is looked at.
    server.on(path, StubReply::body(model(), 404, "text/html"));
    EXPECT_TRUE(fetch());
}

TEST_F(DownloaderTest, OneByteMoreIsTooMuch) {
    server.on(path, whole(model() + 'x'));
    expectRefused(u"Download incompleto (2MB su 2MB)"_s);
}

TEST_F(DownloaderTest, OneByteLessIsTooLittle) {
    server.on(path, whole(model().chopped(1)));
    expectRefused(u"Download incompleto (2MB su 2MB)"_s);
}

TEST_F(DownloaderTest, AStatedLengthThatIsTooShortMakesAnIncompleteFile) {
    StubReply reply = StubReply::cutOff(model(), 2 << 20);
    server.on(path, reply);
    expectRefused(u"Download incompleto (2MB su 2MB)"_s);
}

TEST_F(DownloaderTest, WhatComesAfterTheStatedLengthIsNotOfTheFile) {
    server.on(path, StubReply::cutOff(model() + "more", fileSize));
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderTest, AFileInPiecesIsWholeOnlyWithItsLastPiece) {
    const QByteArray head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    const QByteArray piece = QByteArray::number(fileSize, 16) + "\r\n" + model() + "\r\n";
    server.on(path, {StubReply{head + piece.chopped(percent), Manner::ThenClose, {}},
                     StubReply{head + piece + "0\r\n\r\n", Manner::Whole, {}}});
    const bool first = fetch();
    if (!first) {
        expectNothingLeft();
        ends.clear();
        EXPECT_TRUE(fetch()) << failure().toStdString();
    }
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderTest, WithoutALengthTheCatalogueSaysHowMuchThereIs) {
    server.on(path, unmeasured(model()));
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(progress.back().total, fileSize);
}

TEST_F(DownloaderTest, WithoutAnyKnownSizeEverythingIsTaken) {
    server.on(path, unmeasured(model()));
    ASSERT_TRUE(fetch(entry(0))) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(progress.back().total, 1);
    EXPECT_EQ(progress.back().fraction, static_cast<double>(progress.back().written));
    EXPECT_GT(progress.back().fraction, 1);
}

TEST_F(DownloaderTest, WithoutAKnownSizeTheStatedLengthMustBeMet) {
    for (const qint64 sent : {0, 999}) {
        ends.clear();
        QFile::remove(Log::path());
        server.on(path, StubReply::cutOff(QByteArray(sent, 'x'), 1000));
        expectRefused(u"Download incompleto (0MB su 0MB)"_s, entry(0));
    }
    EXPECT_EQ(server.requests(path).size(), 2U) << "one for each";
    ends.clear();
    server.on(path, whole(QByteArray(1000, 'x')));
    ASSERT_TRUE(fetch(entry(0))) << failure().toStdString();
    EXPECT_EQ(contents().size(), 1000);
}

TEST_F(DownloaderTest, AnEndlessBodyStopsOneByteBeyondTheSize) {
    server.on(path, StubReply{"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}});
    expectRefused(u"Download incompleto (2MB su 2MB)"_s);
    for (const Progress& step : progress) EXPECT_LE(step.written, fileSize + 1);
    EXPECT_EQ(server.requests(path).size(), 1U);
}

TEST_F(DownloaderTest, ALongerFileIsNamedWithItsStatedLength) {
    server.on(path, whole(model() + model()));
    expectRefused(u"Download incompleto (5MB su 2MB)"_s);
}

TEST_F(DownloaderTest, ARedirectionIsFollowed) {
    StubReply elsewhere{"HTTP/1.1 302 Found\r\nLocation: /cdn/file?key=1\r\nContent-Length: 5\r\n\r\nmoved",
                        Manner::Whole,
                        {}};
    server.on(path, elsewhere);
    server.on("/cdn/file?key=1", whole());
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(progress.back().total, fileSize);
}

TEST_F(DownloaderTest, ACircularRedirectionIsAFailure) {
    server.on(path, StubReply{"HTTP/1.1 302 Found\r\nLocation: " + path + "\r\nContent-Length: 0\r\n\r\n",
                              Manner::Whole,
                              {}});
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), u"troppi reindirizzamenti"_s);
    expectNothingLeft();
}

/// The host: it says what the bytes hash to and sends the client elsewhere for them.
class HashingHostTest : public DownloaderTest {
  protected:
    HashingHostTest() { storage.on("/bytes?key=1", whole()); }

    void redirect(const QByteArray& tag) {
        server.on(path, StubReply{"HTTP/1.1 302 Found\r\nX-Linked-Etag: " + tag +
                                      "\r\nX-Linked-Size: " + QByteArray::number(fileSize) +
                                      "\r\nLocation: http://localhost:" + QByteArray::number(storage.port()) +
                                      "/bytes?key=1\r\nContent-Length: 0\r\n\r\n",
                                  Manner::Whole,
                                  {}});
    }
    static QByteArray hash(QCryptographicHash::Algorithm algorithm) {
        return QCryptographicHash::hash(model(), algorithm).toHex();
    }
    void expectRefusedFourTimes(const ModelCatalog::Entry& wanted) {
        ends.clear();
        QFile::remove(Log::path());
        EXPECT_FALSE(fetch(wanted));
        EXPECT_EQ(failure(), u"Download incompleto (2MB su 2MB)"_s);
        EXPECT_TRUE(ends.back() && ends.back()->code() == static_cast<int>(ErrorCode::IncompleteDownload));
        EXPECT_EQ(logged(), retries(3, failure()));
        EXPECT_EQ(ends.size(), 1U);
        expectNothingLeft();
    }

    StubServer storage;
};

TEST_F(HashingHostTest, TheRightBytesAreTaken) {
    redirect('"' + hash(QCryptographicHash::Sha256) + '"');
    ModelCatalog::Entry published = entry();
    published.sha1 = hash(QCryptographicHash::Sha1);
    ASSERT_TRUE(fetch(published)) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
}

TEST_F(HashingHostTest, OtherBytesOfTheSameSizeAreTriedAgain) {
    QByteArray other = model();
    other[fileSize / 2] = static_cast<char>(other[fileSize / 2] ^ 1);
    redirect('"' + hash(QCryptographicHash::Sha256) + '"');
    storage.on("/bytes?key=1", {whole(other), whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(logged().filter(u"fallito (Download incompleto (2MB su 2MB)), retry"_s).size(), 1);

    storage.on("/bytes?key=1", whole(other));
    expectRefusedFourTimes(entry());
}

TEST_F(HashingHostTest, BytesOtherThanThePublishedOnesAreRefused) {
    server.on(path, whole());
    ModelCatalog::Entry published = entry();
    published.sha1 = hash(QCryptographicHash::Sha1).replace('a', 'b');
    expectRefusedFourTimes(published);
}

TEST_F(HashingHostTest, ATagThatIsNoHashIsNotLookedAt) {
    const QByteArray wrong(64, 'a');
    for (const QByteArray& tag : {QByteArray("\"abc\""), wrong, "W/\"" + wrong + '"', '"' + wrong + "b\"",
                                  '"' + QByteArray(64, 'z') + '"'}) {
        ends.clear();
        redirect(tag);
        EXPECT_TRUE(fetch()) << tag.toStdString() << failure().toStdString();
    }
}

TEST_F(HashingHostTest, APageInThePlaceOfTheBytesIsNoModel) {
    redirect('"' + hash(QCryptographicHash::Sha256) + '"');
    storage.on("/bytes?key=1", StubReply::body("<html>sign in</html>", 200, "text/html"));
    expectRefused(u"Download incompleto (0MB su 2MB)"_s);
}

TEST_F(DownloaderTest, TheFolderMayBeExchangedMeanwhile) {
    Clock::setScale(1);
    const QByteArray body = model().left(300);
    server.on(path, StubReply{whole(body).bytes, Manner::OneByOne, std::chrono::milliseconds(2)});
    const QString sameDisk = platform.directories().temporary() + u"/altrove"_s;
    const QString otherDisk = u"/dev/shm/parlivo-altrove"_s;
    for (const QString& other : {sameDisk, otherDisk}) {
        ends.clear();
        const QString former = Config::modelsDir();
        start(entry(body.size()));
        ASSERT_TRUE(desktop::waitFor([&] { return filesIn(former).size() == 1; }));
        QDir().mkpath(other);
        store(Settings::modelsDir, other);
        ASSERT_TRUE(desktop::waitFor([this] { return !ends.empty(); }));
        EXPECT_FALSE(ends.back()) << failure().toStdString();
        EXPECT_TRUE(contents() == body);
        EXPECT_EQ(filesIn(other), QStringList(fileName));
        EXPECT_EQ(filesIn(former), QStringList());
        QFile::remove(file());
    }
}

TEST_F(DownloaderTest, AnotherProtocolIsNoDownload) {
    server.on(path, StubReply{"SSH-2.0-Server\r\n", Manner::ThenClose, {}});
    EXPECT_FALSE(fetch());
    expectNothingLeft();
}

TEST_F(DownloaderTest, DestroyingItCancelsWithoutACallback) {
    StubReply half = cutAt(50 * percent);
    half.manner = Manner::ThenNothing;
    Clock::setScale(1);
    server.on(path, half);
    start(entry());
    ASSERT_TRUE(desktop::waitFor([this] { return !progress.empty(); }));
    EXPECT_EQ(filesIn(Config::modelsDir()).size(), 1);
    downloader.reset();
    EXPECT_TRUE(desktop::waitFor([] { return filesIn(Config::modelsDir()).isEmpty(); }));
    EXPECT_TRUE(ends.empty());
}

TEST_F(DownloaderTest, DestroyingItBetweenTwoTriesCancels) {
    server.on(path, StubReply::of(Manner::CloseAtOnce));
    start(entry());
    ASSERT_TRUE(desktop::waitFor([] { return !logged().filter(u"retry"_s).isEmpty(); }));
    downloader.reset();
    const auto requests = server.requests(path).size();
    desktop::letPass(std::chrono::milliseconds(200));
    EXPECT_EQ(server.requests(path).size(), requests);
    EXPECT_TRUE(ends.empty());
}

TEST_F(DownloaderTest, TheCompletionCallbackMayDestroyIt) {
    server.on(path, whole());
    start(entry());
    bool told = false;
    downloader->onCompletion = [&](const auto&) {
        downloader.reset();
        told = true;
    };
    EXPECT_TRUE(desktop::waitFor([&] { return told; }));
    EXPECT_TRUE(contents() == model());
}

}  // namespace
}  // namespace parlivo
