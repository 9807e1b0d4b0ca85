#include "models/Downloader.h"
#include "settings/Config.h"
#include "support/FileSizeLimit.h"
#include "support/HttpSession.h"
#include "support/PlatformTest.h"
#include "support/StubServer.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

#include <optional>
#include <vector>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;
using Manner = StubReply::Manner;

constexpr qint64 fileSize = 3'000'000;
constexpr int percent = fileSize / 100;
const QString fileName = u"modello.bin"_s;
const QByteArray path = "/repo/resolve/main/modello.bin";

/// A file no two parts of which are alike.
QByteArray makeModel(qint64 size = fileSize) {
    QByteArray model(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char& byte : model) {
        state = state * 1664525 + 1013904223;  // any generator will do
        byte = static_cast<char>(state >> 24);
    }
    return model;
}

const QByteArray& model() {
    static const QByteArray bytes = makeModel();
    return bytes;
}

StubReply whole(const QByteArray& body = model()) {
    return StubReply::body(body, 200, "application/octet-stream");
}

StubReply cutAt(qint64 bytes) {
    return StubReply::cutOff(model().left(bytes), fileSize);
}

/// Without a length: the end of the connection is the end of the file.
StubReply unmeasured(const QByteArray& body) {
    return {"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + body, Manner::ThenClose, {}};
}

class DownloaderTest : public PlatformTest {
  protected:
    DownloaderTest() {
        // The 3 s between two tries, and the minute without any progress.
        Clock::setScale(0.02);
    }

    ModelCatalog::Entry entry(qint64 expectedSize = fileSize) const {
        return {.id = u"best"_s,
                .label = u"Precisa"_s,
                .detail = {},
                .fileName = fileName,
                .url = QUrl(u"http://127.0.0.1:%1"_s.arg(server.port()) + QString::fromLatin1(path)),
                .expectedSize = expectedSize};
    }

    struct Progress {
        double fraction;
        qint64 written;
        qint64 total;
    };

    void start(const ModelCatalog::Entry& wanted) {
        downloader.emplace(wanted);
        downloader->onProgress = [this](double fraction, qint64 written, qint64 total) {
            progress.push_back({fraction, written, total});
        };
        downloader->onCompletion = [this](const std::optional<Error>& error) { ends.push_back(error); };
        downloader->start();
    }
    /// True when the file came; a failure's description is in `failure()`.
    bool fetch(const ModelCatalog::Entry& wanted) {
        start(wanted);
        EXPECT_TRUE(desktop::waitFor([this] { return !ends.empty(); })) << "no end was told";
        return !ends.empty() && !ends.back();
    }
    bool fetch() { return fetch(entry()); }
    QString failure() const { return ends.back() ? ends.back()->localizedDescription() : QString(); }

    static QString file() { return Config::modelsDir() + u'/' + fileName; }
    static QByteArray contents() {
        QFile opened(file());
        return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(missing)");
    }
    static QStringList filesIn(const QString& folder) {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    static QStringList retries(int count, const QString& reason) {
        QStringList lines(u"download avviato: "_s + fileName);
        for (int i = 0; i < count; ++i) {
            lines += u"download "_s + fileName + u" fallito ("_s + reason + u"), retry"_s;
            lines += u"download avviato: "_s + fileName;
        }
        return lines;
    }
    void expectRefused(const QString& reason) {
        EXPECT_FALSE(fetch());
        EXPECT_EQ(failure(), reason);
        EXPECT_TRUE(ends.back() && ends.back()->is(ErrorCode::IncompleteDownload));
        EXPECT_EQ(logged(), QStringList({u"download avviato: "_s + fileName,
                                         u"errore salvataggio "_s + fileName + u": "_s + reason}));
        expectNothingLeft();
        EXPECT_EQ(ends.size(), 1U);
    }
    void expectNothingLeft() const {
        EXPECT_EQ(filesIn(Config::modelsDir()), QStringList());
        EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
    }

    StubServer server;
    std::optional<Downloader> downloader;
    std::vector<Progress> progress;
    std::vector<std::optional<Error>> ends;
};

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

TEST_F(DownloaderTest, TheFolderIsMadeWithAllAboveIt) {
    store(Config::Key::modelsDir, platform.directories().temporary() + u"/a/b c/modelli"_s);
    server.on(path, whole());
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderTest, WhatLiesInItsPlaceIsDeletedAtTheStart) {
    QDir().mkpath(Config::modelsDir());
    ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, file()));
    server.on(path, StubReply::of(Manner::Never));
    start(entry());
    EXPECT_FALSE(QFile::exists(file()));
}

/// Where the connection breaks, in bytes of the body.
class CutConnection : public DownloaderTest, public testing::WithParamInterface<int> {};

TEST_P(CutConnection, IsTriedAgainFromTheBeginning) {
    server.on(path, {cutAt(GetParam()), whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    EXPECT_EQ(logged(), retries(1, u"connessione interrotta dal server"_s)
                            << u"download completato e verificato: "_s + fileName);
    for (const auto& request : server.requests(path)) EXPECT_EQ(request.header("Range"), QByteArray());
}

TEST_P(CutConnection, FourTimesIsTheEnd) {
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

INSTANTIATE_TEST_SUITE_P(At, CutConnection, testing::Values(0, percent, 50 * percent, 99 * percent),
                         [](const auto& cut) { return std::to_string(cut.param / percent) + "Percent"; });

TEST_F(DownloaderTest, ABrokenConnectionIsTriedAgainToo) {
    StubReply reset = cutAt(50 * percent);
    reset.manner = Manner::ThenReset;
    server.on(path, {reset, StubReply::of(Manner::CloseAtOnce), StubReply::of(Manner::ResetAtOnce), whole()});
    ASSERT_TRUE(fetch()) << failure().toStdString();
    EXPECT_TRUE(contents() == model());
    // Before its first word the HTTP client may try again by itself.
    EXPECT_GE(logged().filter(u"retry"_s).size(), 1);
    EXPECT_EQ(ends.size(), 1U);
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
    // All in all longer than the time without progress.
    Clock::setScale(0.005);
    const QByteArray body = model().left(300);
    server.on(path, StubReply{whole(body).bytes, Manner::OneByOne, std::chrono::milliseconds(2)});
    ASSERT_TRUE(fetch(entry(300))) << failure().toStdString();
    EXPECT_TRUE(contents() == body);
    EXPECT_EQ(server.requests(path).size(), 1U);
}

TEST_F(DownloaderTest, NobodyListening) {
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

TEST_F(DownloaderTest, AnErrorPageOfTheRightSizeWouldBe) {
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
    // A transport that breaks off is noticed before: what is left is a proxy that closes in good order.
    server.on(path, {StubReply::cutOff(QByteArray(999, 'x'), 1000), whole(QByteArray(1000, 'x'))});
    ASSERT_TRUE(fetch(entry(0))) << failure().toStdString();
    EXPECT_EQ(contents().size(), 1000);
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

TEST_F(DownloaderTest, ARedirectionInACircleEnds) {
    server.on(path, StubReply{"HTTP/1.1 302 Found\r\nLocation: " + path + "\r\nContent-Length: 0\r\n\r\n",
                              Manner::Whole,
                              {}});
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), u"troppi reindirizzamenti"_s);
    expectNothingLeft();
}

TEST_F(DownloaderTest, AnotherProtocolIsNoDownload) {
    server.on(path, StubReply{"SSH-2.0-Server\r\n", Manner::ThenClose, {}});
    EXPECT_FALSE(fetch());
    expectNothingLeft();
}

TEST_F(DownloaderTest, ABodyWithoutEndFillsTheDiskAndNothingIsLeft) {
    server.on(path, StubReply{"HTTP/1.1 200 OK\r\n\r\n", Manner::WithoutBound, {}});
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": spazio su disco esaurito"_s);
    EXPECT_EQ(logged(), QStringList({u"download avviato: "_s + fileName,
                                     u"errore salvataggio "_s + fileName + u": "_s + failure()}))
        << "no second try";
    expectNothingLeft();
}

TEST_F(DownloaderTest, AFullDiskIsTold) {
    constexpr qint64 large = 12 << 20;  // the disk here holds 8 MiB
    server.on(path, whole(makeModel(large)));
    EXPECT_FALSE(fetch(entry(large)));
    EXPECT_EQ(failure(), fileName + u": spazio su disco esaurito"_s);
    EXPECT_EQ(server.requests(path).size(), 1U);
    expectNothingLeft();
}

TEST_F(DownloaderTest, AFileTooLargeForTheDiskIsTold) {
    server.on(path, whole());
    const FileSizeLimit small(1 << 20);
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": file troppo grande per questo disco"_s);
    expectNothingLeft();
}

TEST_F(DownloaderTest, AFolderThatCannotBeMadeIsTold) {
    const QString inTheWay = platform.directories().temporary() + u"/file"_s;
    ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, inTheWay));
    store(Config::Key::modelsDir, QString(inTheWay + u"/modelli"_s));
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": la posizione non è una cartella"_s);
    EXPECT_EQ(server.requests(path).size(), 1U) << "trying again would not help";
}

TEST_F(DownloaderTest, AFolderThatCannotBeWrittenIsTold) {
    // Not even root writes there; to others a folder of the system's is closed as well.
    store(Config::Key::modelsDir, u"/proc/self/task"_s);
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_TRUE(failure().startsWith(fileName + u": "_s)) << failure().toStdString();
    EXPECT_EQ(ends.back()->domain(), u"POSIX"_s);
    EXPECT_EQ(logged().last(), u"errore salvataggio "_s + fileName + u": "_s + failure());
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
}

TEST_F(DownloaderTest, AFolderInTheFilesPlaceStaysAndIsTold) {
    QDir().mkpath(file() + u"/dentro"_s);
    server.on(path, whole());
    EXPECT_FALSE(fetch());
    EXPECT_EQ(failure(), fileName + u": al suo posto c'è una cartella"_s);
    EXPECT_EQ(filesIn(Config::modelsDir()), QStringList(fileName));
    EXPECT_EQ(filesIn(file()), QStringList(u"dentro"_s));
    EXPECT_FALSE(ModelCatalog::isDownloaded(entry()));
}

TEST_F(DownloaderTest, TwoAtATimeDoNotMix) {
    // The one waits in the middle of its file while the other begins and ends.
    StubReply half = cutAt(50 * percent);
    half.manner = Manner::ThenNothing;
    Clock::setScale(1);
    server.on(path, {half, whole()});
    start(entry());
    ASSERT_TRUE(desktop::waitFor([this] { return !progress.empty(); }));
    Downloader second(entry());
    bool done = false;
    second.onCompletion = [&](const auto& error) { done = !error; };
    second.start();
    EXPECT_TRUE(desktop::waitFor([&] { return done; }));
    EXPECT_TRUE(contents() == model());
    downloader.reset();
    EXPECT_TRUE(desktop::waitFor([] { return filesIn(Config::modelsDir()) == QStringList(fileName); }));
    EXPECT_TRUE(contents() == model());
}

TEST_F(DownloaderTest, LettingGoCallsItOffWithoutAWord) {
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

TEST_F(DownloaderTest, LettingGoBetweenTwoTriesEndsThem) {
    server.on(path, StubReply::of(Manner::CloseAtOnce));
    start(entry());
    ASSERT_TRUE(desktop::waitFor([] { return !logged().filter(u"retry"_s).isEmpty(); }));
    downloader.reset();
    const auto requests = server.requests(path).size();
    desktop::letPass(std::chrono::milliseconds(200));
    EXPECT_EQ(server.requests(path).size(), requests);
    EXPECT_TRUE(ends.empty());
}

TEST_F(DownloaderTest, ItMayBeDestroyedByTheEndItTells) {
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

TEST_F(DownloaderTest, WhatAKilledProgramLeftIsCleanedAway) {
    const QDir models(Config::modelsDir());
    QDir().mkpath(models.path());
    for (const QString& name : {u"a.bin"_s, u"note.txt"_s, u"a.bin.1234.parlivo-download"_s})
        ASSERT_TRUE(QFile::copy(u"/proc/self/cmdline"_s, models.filePath(name)));
    QDir().mkpath(models.filePath(u"cartella.parlivo-download"_s));
    Downloader::removeLeftovers();
    EXPECT_EQ(filesIn(models.path()),
              QStringList({u"a.bin"_s, u"cartella.parlivo-download"_s, u"note.txt"_s}));
}

}  // namespace
}  // namespace parlivo
