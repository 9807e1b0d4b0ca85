// SPDX-License-Identifier: MIT
#include "platform/linux/base/JsonUserDefaults.h"
#include "support/Waiting.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
#include <thread>

namespace parlivo {
namespace {

using namespace Qt::StringLiterals;

/// A program that is killed while it changes settings as fast as it can.
class KilledWriteTest : public testing::Test {
  protected:
    static constexpr int texts = 3000;

    QString file() const { return folder_.filePath(u"Parlivo.json"_s); }
    JsonUserDefaults store() const {
        return {file(), [](const QString&) {}, std::chrono::milliseconds(1)};
    }
    QJsonDocument read() const {
        QFile in(file());
        return in.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(in.readAll()) : QJsonDocument();
    }
    int counter() const { return read().object().value(u"n"_s).toInt(); }

    [[noreturn]] void writeForEver(int from) const {
        auto settings = store();
        for (int n = from;; ++n) {
            settings.setValue(u"testo"_s, QString(n % texts, u'x'));
            settings.setValue(u"n"_s, n);
            // Half of them on this thread, half behind its back.
            if (n % 2 == 0) settings.flush();
        }
    }

    void killAfter(std::chrono::microseconds pause) const {
        const int before = counter();
        const pid_t writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) writeForEver(before + 1);
        EXPECT_TRUE(desktop::waitFor([&] { return counter() > before; }));
        std::this_thread::sleep_for(pause);
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
    }

    QTemporaryDir folder_;
};

TEST_F(KilledWriteTest, TheFileIsAlwaysWholeAndConsistent) {
    store().setValue(u"onboardingDone"_s, true);
    store().setValue(u"n"_s, 0);
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution moment(0, 4000);
    for (int round = 0; round < 40; ++round) {
        killAfter(std::chrono::microseconds(moment(random)));
        ASSERT_TRUE(read().isObject()) << "round " << round;
        const QJsonObject found = read().object();
        const int n = found.value(u"n"_s).toInt();
        const auto length = found.value(u"testo"_s).toString().size();
        EXPECT_TRUE(length == n % texts || length == (n + 1) % texts) << length << " with " << n;
        EXPECT_TRUE(found.value(u"onboardingDone"_s).toBool());
    }
    store().setValue(u"n"_s, -1);
    EXPECT_EQ(counter(), -1) << "no dead program's lock is in the way";
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden), QStringList(u"Parlivo.json"_s));
}

TEST_F(KilledWriteTest, ALockWithoutAnOwnersNameDoesNotBlock) {
    QFile lock(file() + u".lock"_s);
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    // Otherwise its age would free the way in the end.
    ASSERT_TRUE(lock.setFileTime(QDateTime::currentDateTime().addDays(1), QFile::FileModificationTime));
    lock.close();
    store().setValue(u"n"_s, 7);
    EXPECT_EQ(counter(), 7);
    EXPECT_FALSE(lock.exists());
}

TEST_F(KilledWriteTest, OnlyWhatWasBeingWrittenIsCleanedAway) {
    store().setValue(u"n"_s, 1);
    QStringList names{u"Parlivo.json"_s, u"Parlivo.json.bak"_s, u"Parlivo.json.broken"_s, u"note.abcdef"_s,
                      u"Parlivo.json.AbCdEf.txt"_s};
    for (const QString& name : names + QStringList(u"Parlivo.json.AbCdEf"_s)) {
        QFile other(folder_.filePath(name));
        ASSERT_TRUE(other.open(QIODevice::Append));
    }
    store().setValue(u"n"_s, 2);
    names.sort();
    EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name), names);
}

}  // namespace
}  // namespace parlivo
