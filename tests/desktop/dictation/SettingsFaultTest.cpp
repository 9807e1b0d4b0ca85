// SPDX-License-Identifier: MIT
#include "desktop/dictation/ProgramTest.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <unistd.h>

namespace parlivo::desktop {
namespace {

class SettingsFault : public ProgramTest {
  protected:
    enum class Welcome { No, Yes };
    enum class Store { ReadOnly, Writable };

    /// Whatever the settings look like, the key dictates; behind the welcome of a program that knows nothing
    /// of an earlier start, too.
    void expectItWorks(Welcome welcome, Store store = Store::Writable,
                       const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                       const QStringList& wrapper = {}) {
        StubRecogniser stub;
        const Receiver receiver(Receiver::Kind::Qt);
        const Program program(builtBundle(), environment, wrapper);
        ASSERT_TRUE(program.waitUntilUp());
        if (welcome == Welcome::Yes) {
            ASSERT_TRUE(waitForActiveWindow(QStringLiteral("Parlivo")));
            receiver.focus();
        }
        for (const QString& text : {QStringLiteral("prima"), QStringLiteral("seconda")}) {
            expectDictation(program, receiver, stub, text);
        }
        if (store == Store::Writable) {
            EXPECT_TRUE(home::waitForCount(2));
        }
    }
};

TEST_F(SettingsFault, AnEmptyFile) {
    home::writeSettings("");
    expectItWorks(Welcome::Yes);
}

TEST_F(SettingsFault, AFileThatIsNotJsonIsKeptAside) {
    home::writeSettings("onboardingDone = yes\n");
    expectItWorks(Welcome::Yes);
    QFile aside(home::settingsFile() + QStringLiteral(".broken"));
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), "onboardingDone = yes\n");
}

TEST_F(SettingsFault, WrongTypesEverywhere) {
    QJsonObject all;
    for (const char* key :
         {"asrTier", "cleanupTier", "cleanupLevel", "cleanupModel", "dictionary", "dictationMode",
          "hotkeyPreset", "language", "typingSpeed", "modelsDir", "pendingChangelog", "lastSeenVersion"}) {
        all[QLatin1String(key)] = QJsonArray{1, true};
    }
    for (const char* key : {"onboardingDone", "customPromptEnabled", "soundsEnabled", "overlayEnabled",
                            "debugMode", "feedbackGiven"}) {
        all[QLatin1String(key)] = QJsonObject{};
    }
    for (const char* key : {"cleanupMinChars", "dictationCount", "feedbackPromptLastShown"}) {
        all[QLatin1String(key)] = QStringLiteral("quarantadue");
    }
    home::writeSettings(QJsonDocument(all).toJson());
    expectItWorks(Welcome::Yes);
    EXPECT_EQ(home::settings().value(QLatin1String("language")), all.value(QLatin1String("language")));
}

TEST_F(SettingsFault, AFileThatCannotBeWritten) {
    home::settle();
    const QByteArray before = home::readSettings();
    const QString folder = QFileInfo(home::settingsFile()).path();
    ASSERT_TRUE(QFile::setPermissions(home::settingsFile(), QFile::ReadOwner));
    ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    // Root may write anything, unless it gives that up.
    const QStringList humbly{QStringLiteral("setpriv"), QStringLiteral("--bounding-set=-dac_override")};
    expectItWorks(Welcome::No, Store::ReadOnly, QProcessEnvironment::systemEnvironment(),
                  ::geteuid() == 0 ? humbly : QStringList());
    EXPECT_EQ(home::readSettings(), before);
}

TEST_F(SettingsFault, NoHome) {
    home::settle();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("HOME"));
    // The models lie below HOME, so that there is none.
    expectItWorks(Welcome::Yes, Store::Writable, environment);
}

}  // namespace

}  // namespace parlivo::desktop
