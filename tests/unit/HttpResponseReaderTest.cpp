#include "support/HttpResponseReader.h"

#include <gtest/gtest.h>

#include <vector>

namespace parlivo {
namespace {

using Progress = HttpResponseReader::Progress;

constexpr qint64 roomy = 1'000;

/// A response of the body "Ciao", framed in each way there is.
const std::vector<QByteArray>& framings() {
    static const std::vector<QByteArray> all = {
        "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nCiao",
        "HTTP/1.0 200\r\ncontent-LENGTH:4\r\nX: y\r\n\r\nCiao",
        "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nCiao",
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: Chunked\r\n\r\n3\r\nCia\r\n1;a=b\r\no\r\n0\r\n\r\n",
        "HTTP/1.1 200\r\nTransfer-Encoding: chunked\r\nContent-Length: 9\r\n\r\n4\r\nCiao\r\n0\r\n\r\n",
        "HTTP/1.1 200\r\nTransfer-Encoding: chunked\r\n\r\n4 \r\nCiao\r\n0\r\nA: b\r\n\r\n",
        "HTTP/1.1 200 OK\r\n\r\nCiao",
    };
    return all;
}

Progress readWhole(HttpResponseReader& reader, const QByteArray& response) {
    const Progress progress = reader.take(response);
    return progress == Progress::More ? reader.end() : progress;
}

TEST(HttpResponseReaderTest, UnderstandsEveryFraming) {
    for (const QByteArray& response : framings()) {
        HttpResponseReader reader(roomy);
        EXPECT_EQ(readWhole(reader, response), Progress::Whole) << response.constData();
        EXPECT_EQ(reader.status(), 200);
        EXPECT_EQ(reader.body(), "Ciao") << response.constData();
    }
}

TEST(HttpResponseReaderTest, DoesNotMindWhereTheResponseIsCut) {
    for (const QByteArray& response : framings()) {
        for (qsizetype size = 1; size <= response.size(); ++size) {
            HttpResponseReader reader(roomy);
            for (qsizetype at = 0; at < response.size(); at += size) reader.take(response.mid(at, size));
            EXPECT_EQ(reader.end(), Progress::Whole) << size << ' ' << response.constData();
            EXPECT_EQ(reader.body(), "Ciao") << size << ' ' << response.constData();
        }
    }
}

TEST(HttpResponseReaderTest, TellsAWholeResponseFromItsBeginnings) {
    // The end of the connection is what ends the last of them.
    for (auto response = framings().begin(); response != framings().end() - 1; ++response) {
        for (qsizetype size = 0; size < response->size(); ++size) {
            HttpResponseReader reader(roomy);
            EXPECT_EQ(reader.take(response->left(size)), Progress::More)
                << size << ' ' << response->constData();
            EXPECT_EQ(reader.end(), Progress::Broken) << size << ' ' << response->constData();
        }
        HttpResponseReader reader(roomy);
        EXPECT_EQ(reader.take(*response), Progress::Whole) << response->constData();
    }
}

TEST(HttpResponseReaderTest, ExpectsNoBodyWhereNoneComes) {
    for (const char* const response : {"HTTP/1.1 204 No Content\r\n\r\n", "HTTP/1.1 304 Not Modified\r\n\r\n",
                                       "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n",
                                       "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"}) {
        HttpResponseReader reader(roomy);
        EXPECT_EQ(reader.take(response), Progress::Whole) << response;
        EXPECT_EQ(reader.body(), QByteArray()) << response;
    }
}

TEST(HttpResponseReaderTest, RefusesWhatIsNoResponse) {
    for (const char* const response :
         {"SSH-2.0 200\r\n\r\n", "HTTP/2 200 OK\r\n\r\n", "HTTP/1.1\r\n\r\n", "HTTP/1.1 OK\r\n\r\n",
          "HTTP/1.1 99 Odd\r\n\r\n", "HTTP/1.1 -200 Odd\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nCiao\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n-1\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nCiao!\r\n"}) {
        HttpResponseReader reader(roomy);
        EXPECT_EQ(reader.take(response), Progress::Broken) << response;
        EXPECT_EQ(reader.end(), Progress::Broken) << response;
    }
}

TEST(HttpResponseReaderTest, TakesABodyUpToItsLimitInEveryFraming) {
    for (const QByteArray& response : framings()) {
        HttpResponseReader enough(4);
        EXPECT_EQ(readWhole(enough, response), Progress::Whole) << response.constData();
        HttpResponseReader tooLittle(3);
        EXPECT_EQ(readWhole(tooLittle, response), Progress::Broken) << response.constData();
    }
}

TEST(HttpResponseReaderTest, DoesNotListenToAHeadWithoutEnd) {
    for (const char* const beginning :
         {"HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"}) {
        HttpResponseReader reader(roomy);
        Progress progress = reader.take(beginning);
        for (int i = 0; i < 100 && progress == Progress::More; ++i)
            progress = reader.take(QByteArray(1'000, '0'));
        EXPECT_EQ(progress, Progress::Broken) << beginning;
    }
}

}  // namespace
}  // namespace parlivo
