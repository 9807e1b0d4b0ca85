// SPDX-License-Identifier: MIT
#include "settings/Log.h"
#include "support/PlatformTest.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimeZone>

#include <ctime>
#include <thread>

namespace parlivo {
namespace {

class LogTest : public PlatformTest {
  protected:
    static QString contents() {
        Log::flush();
        QFile file(Log::path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_F(LogTest, TheFirstCallMakesTheFileWithOneLine) {
    ASSERT_FALSE(QFile::exists(Log::path()));
    Log::info(QStringLiteral("città"));
    static const QRegularExpression line(
        QStringLiteral("^\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\] città\\n$"));
    EXPECT_TRUE(line.match(contents()).hasMatch()) << contents().toStdString();
}

TEST_F(LogTest, TheTimeIsThatOfTheUsersClock) {
    qputenv("TZ", "TEST-05:30");
    tzset();
    const auto usersClock = [] { return QDateTime::currentDateTimeUtc().addSecs(5 * 3600 + 1800); };
    const QDateTime before = usersClock();
    Log::info(QStringLiteral("ora"));
    const QString line = contents();
    const QDateTime after = usersClock();
    qunsetenv("TZ");
    tzset();
    QDateTime written = QDateTime::fromString(line.section(QLatin1Char(']'), 0, 0).sliced(1),
                                              QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    written.setTimeZone(QTimeZone::utc());
    EXPECT_LE(before, written);
    EXPECT_LE(written, after);
}

TEST_F(LogTest, OnlyTheUserReadsIt) {
    Log::info(QStringLiteral("riservato"));
    Log::flush();
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFileInfo(Log::path()).permissions() & others);
}

TEST_F(LogTest, CallsFromManyThreadsGiveWholeLinesInCallOrder) {
    constexpr int threads = 8;
    constexpr int calls = 50;
    std::vector<std::thread> callers;
    callers.reserve(threads);
    for (int t = 0; t < threads; ++t) {
        callers.emplace_back([t] {
            for (int i = 0; i < calls; ++i) Log::info(QStringLiteral("filo %1 riga %2").arg(t).arg(i));
        });
    }
    for (auto& caller : callers) caller.join();
    const QStringList lines = logged();
    ASSERT_EQ(lines.size(), threads * calls);
    std::vector<int> next(threads, 0);
    for (const QString& line : lines) {
        const int thread = line.section(QLatin1Char(' '), 1, 1).toInt();
        EXPECT_EQ(line,
                  QStringLiteral("filo %1 riga %2").arg(thread).arg(next.at(static_cast<size_t>(thread))++));
    }
}

TEST_F(LogTest, AMessageWithALineFeedSpreadsOverTwoLines) {
    Log::info(QStringLiteral("uno\ndue"));
    EXPECT_TRUE(contents().endsWith(QStringLiteral("] uno\ndue\n")));
}

TEST_F(LogTest, AFolderInTheFilesPlaceIsNoFailure) {
    QDir().mkpath(Log::path());
    Log::info(QStringLiteral("perso"));
    Log::flush();
    EXPECT_TRUE(QFileInfo(Log::path()).isDir());
    QDir(Log::path()).removeRecursively();
    Log::info(QStringLiteral("di nuovo"));
    EXPECT_EQ(logged(), QStringList(QStringLiteral("di nuovo")));
}

}  // namespace
}  // namespace parlivo
