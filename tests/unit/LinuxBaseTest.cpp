// SPDX-License-Identifier: MIT
#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/base/JsonUserDefaults.h"
#include "platform/linux/base/LinuxBundle.h"
#include "platform/linux/base/TerminationSignals.h"
#include "platform/linux/base/XdgDirectories.h"
#include "support/Waiting.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <limits>
#include <random>
#include <thread>

namespace parlivo {
namespace {

TEST(TerminationSignalsTest, EachSignalThatAsksForAnEndIsARequestOnTheMainThread) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        int requests = 0;
        const TerminationSignals signals([&requests] { ++requests; });
        ASSERT_EQ(std::raise(number), 0);
        EXPECT_EQ(requests, 0) << "not in the midst of what was interrupted";
        EXPECT_TRUE(desktop::waitFor([&requests] { return requests == 1; })) << number;
    }
}

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

/// Sets or unsets an environment variable until the end of the scope.
class Variable {
  public:
    Variable(const char* name, const char* value)
        : name_(name), before_(qgetenv(name)), was_(qEnvironmentVariableIsSet(name)) {
        value ? qputenv(name, value) : qunsetenv(name);
    }
    ~Variable() { was_ ? qputenv(name_, before_) : qunsetenv(name_); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* name_;
    QByteArray before_;
    bool was_;
};

TEST(XdgDirectoriesTest, FollowsTheVariablesElseTheirDefaults) {
    const Variable home("HOME", "/casa/ada");
    const XdgDirectories places;
    {
        const Variable data("XDG_DATA_HOME", nullptr);
        const Variable state("XDG_STATE_HOME", nullptr);
        const Variable config("XDG_CONFIG_HOME", nullptr);
        EXPECT_EQ(places.applicationSupport(), QStringLiteral("/casa/ada/.local/share"));
        EXPECT_EQ(places.logs(), QStringLiteral("/casa/ada/.local/state/Parlivo"));
        EXPECT_EQ(XdgDirectories::configuration(), QStringLiteral("/casa/ada/.config/Parlivo"));
    }
    const Variable data("XDG_DATA_HOME", "/dati");
    EXPECT_EQ(places.applicationSupport(), QStringLiteral("/dati"));
    const Variable relative("XDG_STATE_HOME", "relativo/non/vale");
    EXPECT_EQ(places.logs(), QStringLiteral("/casa/ada/.local/state/Parlivo"));
}

TEST(XdgDirectoriesTest, WithoutHomeTheUserDatabaseSays) {
    for (const char* value : {static_cast<const char*>(nullptr), "", "relativa"}) {
        const Variable home("HOME", value);
        const QString path = XdgDirectories().home();
        EXPECT_TRUE(QDir::isAbsolutePath(path));
        EXPECT_NE(path, QStringLiteral("/"));
    }
}

TEST(InheritedEnvironmentTest, HoldsNoVariableThatTheProgramSetForItself) {
    setOwnVariable("PARLIVO_TEST_OWN", "1");
    EXPECT_EQ(qgetenv("PARLIVO_TEST_OWN"), "1");
    EXPECT_FALSE(inheritedEnvironment().contains(QStringLiteral("PARLIVO_TEST_OWN")));
    EXPECT_EQ(inheritedEnvironment().value(QStringLiteral("PATH")), qEnvironmentVariable("PATH"));
    qunsetenv("PARLIVO_TEST_OWN");
}

TEST(LinuxBundleTest, ReadsTheVersionOfAPropertyList) {
    const QString version = QStringLiteral("CFBundleShortVersionString");
    const auto list = [](const char* body) {
        return QByteArray("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>") + body + "</dict></plist>";
    };
    EXPECT_EQ(propertyListString(list("<key>a</key><array><string>x</string></array>"
                                      "<key>CFBundleShortVersionString</key><string>1.4.2</string>"),
                                 version),
              QStringLiteral("1.4.2"));
    EXPECT_EQ(propertyListString(list("<key>CFBundleShortVersionString</key><integer>1</integer>"), version),
              std::nullopt);
    EXPECT_EQ(propertyListString(list("<key>a</key><string>CFBundleShortVersionString</string>"), version),
              std::nullopt);
    EXPECT_EQ(propertyListString(list("<key>CFBundleShortVersionString</key>"), version), std::nullopt);
    EXPECT_EQ(propertyListString("<plist><dict><key>CFBundleShortVersionString</key><string>1.", version),
              std::nullopt);
    EXPECT_EQ(propertyListString("", version), std::nullopt);
    EXPECT_EQ(propertyListString("bplist00\x01\x02", version), std::nullopt);
}

TEST(LinuxBundleTest, FindsResourcesInItsOwnFolder) {
    const QTemporaryDir dir;
    const QString contents = dir.path() + QStringLiteral("/Parlivo.app/Contents");
    QDir().mkpath(contents + QStringLiteral("/Resources/sounds"));
    const LinuxBundle bundle(dir.path() + QStringLiteral("/Parlivo.app"));
    EXPECT_EQ(bundle.resource(QStringLiteral("sounds")), contents + QStringLiteral("/Resources/sounds"));
    EXPECT_EQ(bundle.resource(QStringLiteral("ggml-model.bin")), std::nullopt);
    EXPECT_EQ(bundle.shortVersion(), std::nullopt);
}

}  // namespace
}  // namespace parlivo
