// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/fakes/FakeObjects.h"
#include "platform/macos/fakes/FakeQuartz.h"
#include "platform/macos/session/MacLoginItem.h"
#include "platform/macos/session/MacPermissions.h"
#include "platform/macos/session/MacWorkspace.h"

#include <vector>

namespace parlivo {
namespace {

class SessionTest : public MacTest {
  protected:
    SessionTest() { mac::renewWorld(); }
};

TEST_F(SessionTest, ALoginItemIsEnabledInThatStateAlone) {
    MacLoginItem item;
    enum { NotRegistered, Enabled, RequiresApproval, NotFound };
    for (const int status : {NotRegistered, Enabled, RequiresApproval, NotFound}) {
        mac::world().loginStatus = status;
        EXPECT_EQ(item.isEnabled(), status == Enabled) << status;
    }
}

TEST_F(SessionTest, TheMainApplicationIsRegisteredAndUnregistered) {
    MacLoginItem item;
    item.setEnabled(true);
    item.setEnabled(false);
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("register"), QStringLiteral("unregister")}));
}

TEST_F(SessionTest, ARefusedLoginItemGivesTheSystemsWords) {
    MacLoginItem item;
    mac::world().succeeds = false;
    mac::world().errorWords = QStringLiteral("Operazione non consentita");
    for (const bool enabled : {true, false}) {
        try {
            item.setEnabled(enabled);
            ADD_FAILURE() << "no error";
        } catch (const Error& error) {
            EXPECT_EQ(error.localizedDescription(), QStringLiteral("Operazione non consentita"));
            EXPECT_EQ(error.domain(), QStringLiteral("SMAppServiceErrorDomain"));
            EXPECT_EQ(error.code(), 1);
        }
    }
}

TEST_F(SessionTest, TheMicrophonesStatusIsTheSystems) {
    MacPermissions permissions;
    enum { NotDetermined, Restricted, Denied, Authorised };
    struct Row {
        int status;
        MicrophoneStatus expected;
    };
    for (const Row& row :
         {Row{NotDetermined, MicrophoneStatus::NotAsked}, Row{Restricted, MicrophoneStatus::Denied},
          Row{Denied, MicrophoneStatus::Denied}, Row{Authorised, MicrophoneStatus::Authorised}}) {
        mac::world().microphoneStatus = row.status;
        EXPECT_EQ(permissions.microphone(), row.expected) << row.status;
    }
    EXPECT_EQ(mac::takeCalls(), QStringList(4, QStringLiteral("status of soun")));
}

TEST_F(SessionTest, TheSystemsAnswerToTheRequestIsPassedOn) {
    MacPermissions permissions;
    std::vector<bool> answers;
    for (const bool granted : {true, false}) {
        mac::world().grantsMicrophone = granted;
        permissions.requestMicrophone(MicrophoneCheck::WithoutRecording,
                                      [&answers](bool answer) { answers.push_back(answer); });
    }
    EXPECT_EQ(answers, (std::vector<bool>{true, false}));
    EXPECT_EQ(mac::takeCalls(), QStringList(2, QStringLiteral("request soun")));
}

TEST_F(SessionTest, AccessibilityIsAskedWithAndWithoutThePrompt) {
    MacPermissions permissions;
    mac::quartz() = {};
    EXPECT_FALSE(permissions.accessibilityTrusted(Permissions::Prompt::No));
    EXPECT_EQ(mac::takeCalls(), QStringList(QStringLiteral("trusted?")));
    EXPECT_FALSE(permissions.accessibilityTrusted(Permissions::Prompt::Yes));
    EXPECT_EQ(mac::takeCalls(), QStringList({QStringLiteral("options: prompt = true"),
                                             QStringLiteral("trusted? with options")}));
}

TEST_F(SessionTest, PrivacyPanesAreOpenedByTheirAddresses) {
    MacWorkspace workspace;
    workspace.openPrivacyPane(PrivacyPane::Microphone);
    workspace.openPrivacyPane(PrivacyPane::Accessibility);
    const QString pane =
        QStringLiteral("open x-apple.systempreferences:com.apple.preference.security?Privacy_");
    EXPECT_EQ(mac::takeCalls(),
              QStringList({pane + QStringLiteral("Microphone"), pane + QStringLiteral("Accessibility")}));
}

TEST_F(SessionTest, FilesAndAddressesAreOpenedAsEncodedAddresses) {
    MacWorkspace workspace;
    workspace.open(QUrl::fromLocalFile(QStringLiteral("/Users/ada/è un file #1.txt")));
    workspace.open(QUrl(QStringLiteral("https://parlivo.example/novità?a=b&c=d")));
    EXPECT_EQ(mac::takeCalls(),
              QStringList({QStringLiteral("open file:///Users/ada/%C3%A8%20un%20file%20%231.txt"),
                           QStringLiteral("open https://parlivo.example/novit%C3%A0?a=b&c=d")}));
}

}  // namespace
}  // namespace parlivo
