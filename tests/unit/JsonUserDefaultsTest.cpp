// SPDX-License-Identifier: MIT
#include "platform/linux/base/JsonUserDefaults.h"
#include "support/Waiting.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <limits>
#include <random>
#include <thread>

namespace parlivo {
namespace {

class JsonUserDefaultsTest : public testing::Test {
  protected:
    QString file() const { return dir.path() + QStringLiteral("/Parlivo/Parlivo.json"); }
    /// Never writes by itself in the time of a test.
    static constexpr std::chrono::hours never{1};

    JsonUserDefaults store(std::chrono::milliseconds delay = never) {
        return {file(), [this](const QString& complaint) { complaints.append(complaint); }, delay};
    }
    QJsonObject stored() const { return QJsonDocument::fromJson(read(file())).object(); }
    void write(const QByteArray& text) const {
        QDir().mkpath(QFileInfo(file()).path());
        QFile out(file());
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(out.write(text), text.size());
    }
    QByteArray read(const QString& path) const {
        QFile in(path);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    QStringList complaints;
};

const QString key = QStringLiteral("chiave");

TEST_F(JsonUserDefaultsTest, KeepsEachTypeAcrossProcesses) {
    auto first = store();
    const QVariantMap values = {
        {QStringLiteral("testo"), QStringLiteral("perché «no» 👍")},
        {QStringLiteral("vero"), true},
        {QStringLiteral("intero"), std::numeric_limits<qint64>::max()},
        {QStringLiteral("virgola"), 0.25},
    };
    for (auto value = values.begin(); value != values.end(); ++value)
        first.setValue(value.key(), value.value());
    first.flush();
    const auto second = store();
    for (auto value = values.begin(); value != values.end(); ++value) {
        EXPECT_EQ(second.value(value.key()), value.value()) << value.key().toStdString();
        EXPECT_EQ(second.value(value.key()).typeId(), value.value().typeId());
    }
    EXPECT_FALSE(second.value(QStringLiteral("mai scritta")).isValid());
    EXPECT_TRUE(complaints.isEmpty());
}

TEST_F(JsonUserDefaultsTest, ADateIsKeptAsTextInUtc) {
    const QDateTime moment(QDate(2026, 3, 1), QTime(13, 30, 15, 250), QTimeZone(3600));
    store().setValue(QStringLiteral("when"), moment);
    EXPECT_EQ(store().value(QStringLiteral("when")), QStringLiteral("2026-03-01T12:30:15.250Z"));
}

TEST_F(JsonUserDefaultsTest, IsPlainJsonForTheUsersEyesOnly) {
    store().setValue(key, QStringLiteral("v"));
    EXPECT_EQ(QJsonDocument::fromJson(read(file())).object().value(key).toString(), QStringLiteral("v"));
    EXPECT_EQ(QFileInfo(file()).permissions() & QFile::Permissions(0x0077), QFile::Permissions());
}

TEST_F(JsonUserDefaultsTest, AFileThatOthersCouldReadIsClosedToThem) {
    write("{}");
    QFile::setPermissions(file(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    store().setValue(key, 1);
    EXPECT_EQ(QFileInfo(file()).permissions() & QFile::Permissions(0x0077), QFile::Permissions());
}

TEST_F(JsonUserDefaultsTest, AChangeMadeByHandCountsAtTheNextRead) {
    auto defaults = store();
    defaults.setValue(key, QStringLiteral("prima"));
    defaults.flush();
    ASSERT_EQ(defaults.value(key).toString(), QStringLiteral("prima"));
    write(R"({"chiave": "scritto a mano", "altra": [1, {"x": null}]})");
    EXPECT_EQ(defaults.value(key).toString(), QStringLiteral("scritto a mano"));
    defaults.setValue(key, QStringLiteral("dopo"));
    defaults.flush();
    const QJsonObject object = stored();
    EXPECT_EQ(object.value(key).toString(), QStringLiteral("dopo"));
    EXPECT_EQ(QJsonDocument(object.value(QStringLiteral("altra")).toArray()).toJson(QJsonDocument::Compact),
              QByteArray(R"([1,{"x":null}])"))
        << "unknown keys survive";
}

TEST_F(JsonUserDefaultsTest, ARemovedKeyIsAbsent) {
    auto defaults = store();
    defaults.setValue(key, 1);
    defaults.flush();
    defaults.remove(key);
    EXPECT_FALSE(defaults.value(key).isValid());
    EXPECT_TRUE(stored().contains(key)) << "the disk follows";
    defaults.flush();
    EXPECT_FALSE(stored().contains(key));
    EXPECT_FALSE(defaults.value(key).isValid());
}

TEST_F(JsonUserDefaultsTest, AChangeIsInForceBeforeTheDiskHasIt) {
    auto defaults = store();
    for (int i = 0; i < 100; ++i) {
        defaults.setValue(key, i);
        EXPECT_EQ(defaults.value(key), i);
    }
    EXPECT_FALSE(QFile::exists(file()));
    defaults.flush();
    EXPECT_EQ(stored().value(key).toInt(), 99);
}

TEST_F(JsonUserDefaultsTest, TheDiskFollowsByItself) {
    auto defaults = store(std::chrono::milliseconds(1));
    for (int i = 0; i < 3; ++i) {
        defaults.setValue(key, i);
        EXPECT_TRUE(desktop::waitFor([&] { return stored().value(key).toInt(-1) == i; })) << i;
    }
}

TEST_F(JsonUserDefaultsTest, TheUsualDelayIsWithinASecond) {
    EXPECT_EQ(JsonUserDefaults::usualDelay, std::chrono::milliseconds(500));
}

TEST_F(JsonUserDefaultsTest, TheEndWritesWhatIsStillToBeWritten) {
    store().setValue(key, QStringLiteral("ultima"));
    EXPECT_EQ(stored().value(key).toString(), QStringLiteral("ultima"));
}

TEST_F(JsonUserDefaultsTest, AChangeMadeByHandMeanwhileSurvivesTheWrite) {
    write(R"({"chiave": "prima", "altra": 1})");
    auto defaults = store();
    defaults.setValue(key, QStringLiteral("dopo"));
    write(R"({"chiave": "a mano", "altra": 2, "nuova": 3})");
    EXPECT_EQ(defaults.value(QStringLiteral("altra")), 2);
    defaults.flush();
    EXPECT_EQ(stored(), (QJsonObject{{key, QStringLiteral("dopo")},
                                     {QStringLiteral("altra"), 2},
                                     {QStringLiteral("nuova"), 3}}));
}

TEST_F(JsonUserDefaultsTest, ADateIsStoredInUtc) {
    const QDateTime moment(QDate(2026, 3, 1), QTime(13, 30, 15, 250), QTimeZone(3600));
    store().setValue(key, moment);
    EXPECT_EQ(stored().value(key).toString(), QStringLiteral("2026-03-01T12:30:15.250Z"));
}

TEST_F(JsonUserDefaultsTest, EveryCharacterOfATextSurvives) {
    const QString text =
        QStringLiteral("a\u00a0b\u2028c\u2029d\u0085e\tf\ng\r\nh\u0000i👍").append(QChar(0xfeff));
    store().setValue(key, text);
    EXPECT_EQ(store().value(key).toString(), text);
}

TEST_F(JsonUserDefaultsTest, WhatIsNoJsonObjectIsKeptAside) {
    for (const char* broken :
         {"not json", "[1,2]", "\"x\"", "{\"chiave\": ", "{\"chiave\": \"\xff\xfe\"}", "\x01\x02"}) {
        write(broken);
        auto defaults = store();
        EXPECT_FALSE(defaults.value(key).isValid()) << broken;
        EXPECT_EQ(read(file() + QStringLiteral(".broken")), QByteArray(broken));
        EXPECT_FALSE(QFile::exists(file()));
        defaults.setValue(key, QStringLiteral("di nuovo"));
        defaults.flush();
        EXPECT_EQ(store().value(key).toString(), QStringLiteral("di nuovo"));
    }
}

TEST_F(JsonUserDefaultsTest, ABrokenFileIsNotOverwrittenByAWriteBeforeAnyRead) {
    write("prezioso ma rotto");
    store().setValue(key, 1);
    EXPECT_EQ(read(file() + QStringLiteral(".broken")), QByteArray("prezioso ma rotto"));
    EXPECT_EQ(store().value(key).toInt(), 1);
}

TEST_F(JsonUserDefaultsTest, AnEmptyFileMeansNothingStored) {
    write("");
    auto defaults = store();
    EXPECT_FALSE(defaults.value(key).isValid());
    EXPECT_FALSE(QFile::exists(file() + QStringLiteral(".broken")));
    defaults.setValue(key, 5);
    defaults.flush();
    EXPECT_EQ(store().value(key).toInt(), 5);
}

TEST_F(JsonUserDefaultsTest, WhatCannotBeWrittenIsInForceAndWrittenWhenItCanBe) {
    // A file where the folder should be: not even root can write below it.
    QFile obstacle(dir.path() + QStringLiteral("/Parlivo"));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    auto defaults = store();
    defaults.setValue(key, 1);
    defaults.flush();
    EXPECT_EQ(complaints.size(), 1);
    EXPECT_EQ(defaults.value(key), 1);
    EXPECT_FALSE(defaults.value(QStringLiteral("altra")).isValid());
    ASSERT_TRUE(obstacle.remove());
    defaults.flush();
    EXPECT_EQ(stored().value(key).toInt(), 1);
    EXPECT_EQ(complaints.size(), 1);
}

TEST_F(JsonUserDefaultsTest, RandomDamageNeverCrashesAndNeverLosesTheFile) {
    const QByteArray whole = R"({"chiave": "valore", "n": 12, "b": [true, null, {"x": 1.5}]})";
    std::mt19937 random(11);
    for (int round = 0; round < 300; ++round) {
        QByteArray damaged = whole;
        for (int i = 0; i < 3; ++i) {
            damaged[static_cast<qsizetype>(random() % static_cast<unsigned>(damaged.size()))] =
                static_cast<char>(random() % 256);
        }
        QFile::remove(file() + QStringLiteral(".broken"));
        write(damaged);
        (void)store().value(key);
        const bool kept = read(file()) == damaged || read(file() + QStringLiteral(".broken")) == damaged;
        ASSERT_TRUE(kept) << damaged.toStdString();
    }
}

TEST_F(JsonUserDefaultsTest, ThreadsReadAndWriteTogether) {
    auto defaults = store(std::chrono::milliseconds(1));
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&defaults, t] {
            for (int i = 0; i < 25; ++i) {
                defaults.setValue(QStringLiteral("k%1").arg(t), i);
                EXPECT_EQ(defaults.value(QStringLiteral("k%1").arg(t)), i);
                (void)defaults.value(QStringLiteral("k%1").arg((t + 1) % 4));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (int t = 0; t < 4; ++t) EXPECT_EQ(defaults.value(QStringLiteral("k%1").arg(t)).toInt(), 24);
}

// Another program's lock keeps the write waiting, as a slow disk does.
TEST_F(JsonUserDefaultsTest, AReaderDoesNotWaitForAWrite) {
    write(R"({"chiave": "prima", "altra": 1, "tolta": true})");
    auto defaults = store();
    defaults.setValue(key, QStringLiteral("dopo"));
    defaults.remove(QStringLiteral("tolta"));
    ASSERT_TRUE(QFile::setPermissions(file(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    QLockFile lock(file() + QStringLiteral(".lock"));
    ASSERT_TRUE(lock.lock());
    const auto flushed = std::async(std::launch::async, [&] { defaults.flush(); });
    // A write begins with the file's permissions.
    const bool begun = desktop::waitFor([this] { return !(QFile::permissions(file()) & QFile::ReadOther); });

    auto reader = std::async(std::launch::async, [&] {
        defaults.setValue(QStringLiteral("nuova"), 2);
        return QVariantList{defaults.value(QStringLiteral("altra")), defaults.value(key),
                            defaults.value(QStringLiteral("tolta")), defaults.value(QStringLiteral("nuova"))};
    });
    const auto isReady = [&reader] {
        return reader.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    const bool answered = desktop::waitFor(isReady, std::chrono::seconds(10));
    const bool stillWriting = stored().value(key) == QStringLiteral("prima");
    lock.unlock();
    EXPECT_TRUE(begun);
    EXPECT_TRUE(answered);
    EXPECT_TRUE(stillWriting);
    EXPECT_EQ(reader.get(), (QVariantList{1, QStringLiteral("dopo"), QVariant(), 2}));
    flushed.wait();
    EXPECT_EQ(stored(), (QJsonObject{{QStringLiteral("altra"), 1}, {key, QStringLiteral("dopo")}}));
    EXPECT_EQ(defaults.value(QStringLiteral("nuova")), 2);
    defaults.flush();
    EXPECT_EQ(stored().value(QStringLiteral("nuova")), 2);
}

}  // namespace
}  // namespace parlivo
