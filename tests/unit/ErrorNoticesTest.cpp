// SPDX-License-Identifier: MIT
#include "input/HotKeyStatus.h"
#include "settings/SettingsNotifier.h"
#include "unit/AppDelegateFixture.h"

#include <QAction>
#include <QFileInfo>
#include <QMenu>
#include <QUrl>

namespace parlivo {
namespace {

class ErrorNoticesTest : public AppDelegateTest {
  protected:
    fake::Notifications& notifications() { return platform.notifications(); }
    QString buttonShown() { return notifications().last.value_or(Notification{}).actionLabel; }

    void contend(std::initializer_list<const char*> held) {
        platform.hotKeys().contended = HotKeyService::Contention::Common;
        for (const char* id : held) {
            const Preset preset = HotKeyManager::preset(QString::fromLatin1(id));
            platform.hotKeys().taken.insert({preset.keyCode, preset.modifiers});
        }
    }
};

TEST_F(ErrorNoticesTest, AllOfAnErrorIsShownEvenWhereTheMenuCutsIt) {
    launch();
    const QString message = QStringLiteral("lungo ").repeated(40);
    delegate->showError(message);
    EXPECT_EQ(notifications().texts, Strings(message));
    EXPECT_EQ(buttonShown(), line(u"Apri la cartella del log"));
    notifications().choose();
    EXPECT_EQ(platform.workspace().opened,
              Strings(QUrl::fromLocalFile(QFileInfo(Log::path()).path()).toString()));
}

TEST_F(ErrorNoticesTest, TheSwitchTurnsThemOff) {
    store(Settings::notificationsEnabled, false);
    launch();
    delegate->showError(line(u"qualcosa"));
    EXPECT_TRUE(notifications().texts.isEmpty());
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ qualcosa"));
}

TEST_F(ErrorNoticesTest, WithoutAMicrophoneTheSoundSettingsHelp) {
    platform.audioInput().present = false;
    launch();
    platform.hotKeys().press();
    EXPECT_EQ(notifications().texts,
              Strings(line(u"Impossibile avviare la registrazione: Microfono non disponibile")));
    EXPECT_EQ(buttonShown(), line(u"Impostazioni audio"));
    notifications().choose();
    ASSERT_EQ(platform.workspace().panes.size(), 1U);
    EXPECT_EQ(platform.workspace().panes[0], PrivacyPane::Microphone);
}

TEST_F(ErrorNoticesTest, SilenceLeadsToTheSoundSettingsToo) {
    launch();
    dictate(line(u""));
    spinUntil([this] { return !notifications().texts.isEmpty(); });
    EXPECT_EQ(notifications().texts,
              Strings(line(u"Non ho sentito nulla — controlla il microfono nel menu")));
    EXPECT_EQ(buttonShown(), line(u"Impostazioni audio"));
}

TEST_F(ErrorNoticesTest, WithoutAModelTheDownloadHelps) {
    transcriptionError = Error(ErrorCode::WhisperNotResponding, line(u"modello mancante: x.bin"));
    launch();
    platform.bundle().resources.clear();
    dictate(line(u"segreto"));
    spinUntil([this] { return !notifications().texts.isEmpty(); });
    EXPECT_EQ(notifications().texts, Strings(line(u"modello mancante: x.bin")));
    EXPECT_EQ(buttonShown(), line(u"Scarica…"));
    notifications().choose();
    EXPECT_TRUE(calls().contains(QStringLiteral("recognisers")));
}

TEST_F(ErrorNoticesTest, NoDictatedTextIsShown) {
    launch();
    dictate(line(u"una frase riservata"));
    platform.permissions().trusted = false;
    dictate(line(u"una frase riservata"));
    transcriptionError = Error(ErrorCode::WhisperReplyInvalid, line(u"risposta whisper-server non valida"));
    dictate(line(u"una frase riservata"));
    spinUntil([this] { return notifications().texts.size() == 2; });
    for (const QString& text : notifications().texts)
        EXPECT_FALSE(text.contains(line(u"riservata"))) << text.toStdString();
}

TEST_F(ErrorNoticesTest, ARefusedHotKeyIsSeenInTheMenuAndLeadsToTheChoice) {
    contend({"opt-space"});
    store(Settings::hotkeyPreset, line(u"opt-space"));
    launch();
    EXPECT_TRUE(
        delegate->statusLine().startsWith(line(u"⚠️ ⌥ Spazio è già usata da un altro programma")))
        << delegate->statusLine().toStdString();
    ASSERT_EQ(notifications().texts.size(), 1);
    EXPECT_EQ(buttonShown(), line(u"Scegli la scorciatoia…"));
    notifications().choose();
    EXPECT_TRUE(calls().contains(QStringLiteral("hotKeyChoice")));
}

TEST_F(ErrorNoticesTest, TheWarningGoesWhenTheKeyIsFree) {
    contend({"opt-space"});
    store(Settings::hotkeyPreset, line(u"opt-space"));
    launch();
    platform.hotKeys().mayBeFree();
    EXPECT_EQ(notifications().texts.size(), 1) << "the same refusal is told once";
    platform.hotKeys().taken.clear();
    platform.hotKeys().mayBeFree();
    EXPECT_FALSE(notifications().last) << "taken back";
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
}

TEST_F(ErrorNoticesTest, AnErrorInItsPlaceIsNotTakenBackWithTheKeys) {
    contend({"opt-space"});
    store(Settings::hotkeyPreset, line(u"opt-space"));
    launch();
    delegate->showError(line(u"qualcosa"));
    platform.hotKeys().taken.clear();
    platform.hotKeys().mayBeFree();
    ASSERT_TRUE(notifications().last);
    EXPECT_EQ(notifications().last->text, line(u"qualcosa"));
}

TEST_F(ErrorNoticesTest, TheRefusedKeyIsShownAgainAfterAnError) {
    Clock::setScale(0.002);
    contend({"opt-space"});
    store(Settings::hotkeyPreset, line(u"opt-space"));
    launch();
    const QString refused = delegate->statusLine();
    delegate->showError(line(u"qualcosa"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ qualcosa"));
    spinUntil([&] { return delegate->statusLine() == refused; });
}

TEST_F(ErrorNoticesTest, AnotherChoiceEndsTheWarning) {
    contend({"opt-space"});
    store(Settings::hotkeyPreset, line(u"opt-space"));
    launch();
    store(Settings::hotkeyPreset, line(u"opt-backtick"));
    Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::recording);
}

TEST_F(ErrorNoticesTest, AFirstRunThatWasPutOffIsResumedByTheSecondStart) {
    store(Settings::onboardingDone, false);
    launch();
    putOff = true;
    onboardingPutOff();
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ Configurazione da finire — clicca per riprendere"));
    delegate->perform(RemoteCommand::ShowSettings);
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
    EXPECT_FALSE(calls().contains(QStringLiteral("settings")));
    delegate->perform(RemoteCommand::ShowSettings);
    EXPECT_TRUE(calls().contains(QStringLiteral("settings")));
}

}  // namespace
}  // namespace parlivo
