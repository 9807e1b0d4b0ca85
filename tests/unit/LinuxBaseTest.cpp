// SPDX-License-Identifier: MIT
#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/base/LinuxBundle.h"
#include "platform/linux/base/TerminationSignals.h"
#include "platform/linux/base/XdgDirectories.h"
#include "support/Waiting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

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
