// SPDX-License-Identifier: MIT
#include "AppDelegateFixture.h"
#include "settings/SettingsNotifier.h"
#include "support/Words.h"

#include <QAction>
#include <QApplication>
#include <QWidget>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

/// The line of the only menu that there is.
QString microphoneLine() {
    for (QWidget* window : QApplication::topLevelWidgets())
        for (const QAction* line : window->actions())
            if (line->text().startsWith(QStringLiteral("Microfono: "))) return line->text();
    return {};
}

TEST_F(AppDelegateTest, StartsUpInOrder) {
    launch();
    settle();
    EXPECT_EQ(delegate->state(), State::idle);
    EXPECT_EQ(delegate->statusLine(), line(u"Pronto — tieni premuto ⌥Spazio per dettare"));
    EXPECT_EQ(platform.hotKeys().registered.size(), 1U);
    EXPECT_EQ(platform.permissions().prompts, 1);
    EXPECT_EQ(platform.permissions().microphoneRequests, std::vector{MicrophoneCheck::WithoutRecording})
        << "a recording at each login";
    EXPECT_EQ(logged(), Strings({line(u"permesso microfono: OK"), line(u"permesso accessibilità: OK")}));
    delegate.reset();  // waits for the warm-up
    const Strings made = calls();
    EXPECT_FALSE(made.contains(line(u"onboarding")));
    EXPECT_LT(made.indexOf(line(u"updater")), made.indexOf(line(u"whatsNew")));
}

TEST_F(AppDelegateTest, TheIdleTextNamesTheKeyThatIsChosenNow) {
    const Words words({{"Pronto — tieni premuto ⌥Spazio per dettare", QStringLiteral("Pronto — %1")}});
    launch();
    EXPECT_EQ(delegate->statusLine(), QStringLiteral("Pronto — ") + HotKeyManager::presets()[0].label);
    store(Settings::hotkeyPreset, QStringLiteral("opt-backtick"));
    Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    EXPECT_EQ(delegate->statusLine(), QStringLiteral("Pronto — ") + HotKeyManager::presets()[3].label);
    platform.hotKeys().press();
    store(Settings::hotkeyPreset, QStringLiteral("opt-space"));
    Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    EXPECT_EQ(delegate->statusLine(), statusText(State::recording)) << "a dictation is under way";
}

TEST_F(AppDelegateTest, TheMicrophonesLineFollowsAnAnswerThatComesLater) {
    platform.permissions().microphoneStatus = MicrophoneStatus::NotAsked;
    launch();
    EXPECT_EQ(microphoneLine(), line(u"Microfono: ⚠️ non richiesto — clicca"));
    platform.permissions().setMicrophone(MicrophoneStatus::Authorised);
    EXPECT_EQ(microphoneLine(), line(u"Microfono: ✅"));
    platform.permissions().setMicrophone(MicrophoneStatus::Denied);
    EXPECT_EQ(microphoneLine(), line(u"Microfono: ⛔️ negato — clicca"));
}

TEST_F(AppDelegateTest, WarmsUpBothEnginesWhenAllIsReady) {
    launch();
    spinUntil([this] { return calls().contains(line(u"ensureCleaner")); });
    EXPECT_LT(calls().indexOf(line(u"ensureTranscriber")), calls().indexOf(line(u"ensureCleaner")));
}

TEST_F(AppDelegateTest, ShowsTheFirstRunUntilItIsDone) {
    store(Settings::onboardingDone, false);
    launch();
    EXPECT_TRUE(calls().contains(line(u"onboarding")));
    EXPECT_EQ(platform.permissions().prompts, 0);
    EXPECT_FALSE(calls().contains(line(u"ensureTranscriber")));
    onboardingFinished();
    spinUntil([this] { return calls().contains(line(u"ensureTranscriber")); });
    delegate.reset();
    EXPECT_FALSE(calls().contains(line(u"ensureCleaner")))
        << "the end of the first run warms the recogniser only";
}

TEST_F(AppDelegateTest, ShowsTheFirstRunAgainWhenNoModelIsLeft) {
    platform.bundle().resources.clear();
    launch();
    EXPECT_TRUE(calls().contains(line(u"onboarding")));
    EXPECT_EQ(platform.hotKeys().registered.size(), 1U) << "the hot key is there all the same";
}

TEST_F(AppDelegateTest, AFirstRunThatEndsAfterTheProgramDoesNothing) {
    store(Settings::onboardingDone, false);
    launch();
    delegate.reset();
    onboardingFinished();
    EXPECT_FALSE(calls().contains(line(u"ensureTranscriber")));
}

TEST_F(AppDelegateTest, PushToTalkPassesThroughEveryState) {
    launch();
    dictate(line(u"Ciao a tutti."));
    EXPECT_EQ(platform.remoteControl().announced,
              Strings({line(u"recording"), line(u"transcribing"), line(u"cleaning"), line(u"typing"),
                       line(u"idle")}));
    EXPECT_TRUE(calls().contains(line(u"type Ciao a tutti.")));
    EXPECT_EQ(platform.sounds().played, Strings({line(u"Tink"), line(u"Pop")}));
    EXPECT_EQ(filesLeft(), Strings());
    EXPECT_EQ(calls().last(), line(u"invite"));
}

TEST_F(AppDelegateTest, EachStateHasItsTextAndIcon) {
    launch();
    platform.hotKeys().press();
    EXPECT_EQ(delegate->statusLine(), line(u"🔴 Registrazione…"));
    ageRecording(1s);
    platform.hotKeys().release();
    EXPECT_EQ(delegate->statusLine(), line(u"⏳ Trascrizione…"));
    answer();
    spinUntil([this] { return delegate->state() == State::idle; });
    EXPECT_EQ(delegate->statusLine(), line(u"Pronto — tieni premuto ⌥Spazio per dettare"));
}

TEST_F(AppDelegateTest, ToggleStartsOnOnePressAndStopsOnTheNext) {
    store(Settings::dictationMode, line(u"toggle"));
    launch();
    platform.hotKeys().press();
    platform.hotKeys().release();
    ageRecording(1s);
    EXPECT_EQ(delegate->state(), State::recording) << "key up never stops";
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::transcribing);
    platform.hotKeys().release();
    answer();
    spinUntil([this] { return delegate->state() == State::idle; });
    EXPECT_TRUE(calls().contains(line(u"type Ciao a tutti.")));
}

TEST_F(AppDelegateTest, WhereOnlyPressesAreToldTheKeyTogglesWhateverIsChosen) {
    platform.hotKeys().told = HotKeyService::Edges::PressesOnly;
    store(Settings::dictationMode, line(u"ptt"));
    launch();
    platform.hotKeys().press();
    platform.hotKeys().release();  // as some systems do at once
    ageRecording(1s);
    EXPECT_EQ(delegate->state(), State::recording);
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::transcribing);
    answer();
    spinUntil([this] { return delegate->state() == State::idle; });
    EXPECT_EQ(delegate->statusLine(), line(u"Pronto — premi ⌥ Spazio per dettare"));
    delegate->perform(RemoteCommand::Press);
    ageRecording(1s);
    delegate->perform(RemoteCommand::Release);
    EXPECT_EQ(delegate->state(), State::transcribing) << "a script tells of both";
    answer();
    spinUntil([this] { return delegate->state() == State::idle; });
}

TEST_F(AppDelegateTest, WithoutHotKeysTheIdleTextSaysWhatToBind) {
    platform.hotKeys().told = HotKeyService::Edges::None;
    launch();
    EXPECT_EQ(delegate->statusLine(), line(u"Pronto — assegna un tasto a parlivo --toggle"));
    EXPECT_TRUE(platform.hotKeys().registered.empty());
    delegate->perform(RemoteCommand::Toggle);
    EXPECT_EQ(delegate->state(), State::recording);
}

TEST_F(AppDelegateTest, AnUnknownModeStartsAndIsNeverEndedByTheKey) {
    store(Settings::dictationMode, line(u"hold"));
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::recording);
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::recording);
    EXPECT_EQ(platform.audioInput().opened, 1);
    store(Settings::dictationMode, line(u"ptt"));
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::transcribing) << "read afresh on each event";
}

TEST_F(AppDelegateTest, APressWhileBusyDoesNothingInAnyMode) {
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    platform.hotKeys().release();
    for (const char16_t* mode : {u"ptt", u"toggle", u"boh"}) {
        store(Settings::dictationMode, line(mode));
        platform.hotKeys().press();
        platform.hotKeys().release();
        EXPECT_EQ(delegate->state(), State::transcribing);
    }
    EXPECT_EQ(platform.audioInput().opened, 1);
}

TEST_F(AppDelegateTest, AShortTapLeavesNothing) {
    launch();
    platform.hotKeys().press();
    ageRecording(299ms);
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::idle);
    EXPECT_EQ(platform.sounds().played, Strings(line(u"Tink"))) << "no sound, no message";
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
    EXPECT_EQ(filesLeft(), Strings());
    dictate(line(u"Ora sì."), 300ms);
    EXPECT_TRUE(calls().contains(line(u"type Ora sì.")));
}

TEST_F(AppDelegateTest, AnUnusableMicrophoneIsSaidAndTheNextTryWorks) {
    launch();
    platform.audioInput().present = false;
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::idle);
    EXPECT_EQ(delegate->statusLine(),
              line(u"⚠️ Impossibile avviare la registrazione: Microfono non disponibile"));
    EXPECT_EQ(platform.sounds().played, Strings(line(u"Basso")));
    platform.hotKeys().release();
    platform.audioInput().present = true;
    dictate(line(u"Eccomi."));
    EXPECT_TRUE(calls().contains(line(u"type Eccomi.")));
}

TEST_F(AppDelegateTest, AStreamThatCannotStartShowsTheSystemsReason) {
    launch();
    platform.audioInput().startError = Error(line(u"PulseAudio"), 5, line(u"Nessuna entità"));
    platform.hotKeys().press();
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ Impossibile avviare la registrazione: Nessuna entità"));
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(AppDelegateTest, AMicrophoneThatGoesAwayEndsTheRecordingWithWhatItHas) {
    launch();
    answer();
    platform.hotKeys().press();
    ageRecording(2s);
    ASSERT_TRUE(platform.audioInput().interrupt());
    spinUntil([this] { return calls().contains(line(u"type Ciao a tutti.")); });
    spinUntil([this] { return delegate->state() == State::idle; });
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::idle) << "the late release is of no recording";
}

TEST_F(AppDelegateTest, SilentWhenSoundsAreOff) {
    store(Settings::soundsEnabled, false);
    launch();
    dictate(line(u""));
    EXPECT_EQ(platform.sounds().played, Strings());
}

TEST_F(AppDelegateTest, AnErrorIsCutAtEightyCharacters) {
    launch();
    const QString accent = line(u"e\u0301");
    delegate->showError(accent.repeated(200));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ ") + accent.repeated(80));
}

TEST_F(AppDelegateTest, TheIdleTextReplacesAnErrorAfterEightSeconds) {
    Clock::setScale(0.002);  // 8 s are 16 ms
    launch();
    delegate->showError(line(u"qualcosa"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ qualcosa"));
    spinUntil([this] { return delegate->statusLine() == statusText(State::idle); });
}

TEST_F(AppDelegateTest, AnErrorsEndLeavesARunningDictationAlone) {
    Clock::setScale(0.002);
    launch();
    delegate->showError(line(u"qualcosa"));
    platform.hotKeys().press();
    bool later = false;
    const Lifetime alive;
    MainQueue::after(10s, alive.token(), [&] { later = true; });
    spinUntil([&] { return later; });
    EXPECT_EQ(delegate->statusLine(), line(u"🔴 Registrazione…"));
}

TEST_F(AppDelegateTest, TheFirstOfTwoErrorsMayEndTheSecondEarly) {
    Clock::setScale(0.01);
    launch();
    delegate->showError(line(u"primo"));
    bool between = false;
    const Lifetime alive;
    MainQueue::after(4s, alive.token(), [&] { between = true; });
    spinUntil([&] { return between; });
    delegate->showError(line(u"secondo"));
    bool firstOver = false;
    MainQueue::after(5s, alive.token(), [&] { firstOver = true; });
    spinUntil([&] { return firstOver; });
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
}

TEST_F(AppDelegateTest, APresetChangeRegistersAnew) {
    launch();
    store(Settings::hotkeyPreset, line(u"cmd-shift-space"));
    Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    ASSERT_EQ(platform.hotKeys().registered.size(), 1U);
    EXPECT_EQ(platform.hotKeys().registered[0].modifiers, 0x0300U);
    delegate.reset();
    Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
    EXPECT_TRUE(platform.hotKeys().registered.empty()) << "nobody is left to register";
}

TEST_F(AppDelegateTest, CommandsFromOutsideAreTheKeysEdges) {
    launch();
    answer();
    delegate->perform(RemoteCommand::Press);
    EXPECT_EQ(delegate->state(), State::recording);
    ageRecording(1s);
    delegate->perform(RemoteCommand::Release);
    spinUntil([this] { return delegate->state() == State::idle; });
    delegate->perform(RemoteCommand::Toggle);
    EXPECT_EQ(delegate->state(), State::recording);
    ageRecording(1s);
    delegate->perform(RemoteCommand::Release);
    EXPECT_EQ(delegate->state(), State::transcribing) << "release ends push-to-talk whatever began it";
    spinUntil([this] { return delegate->state() == State::idle; });
    EXPECT_EQ(calls().filter(line(u"type ")).size(), 2);
    delegate->perform(RemoteCommand::ShowSettings);
    delegate->perform(RemoteCommand::ShowFeedback);
    EXPECT_EQ(calls().mid(calls().size() - 2), Strings({line(u"settings"), line(u"feedback")}));
}

TEST_F(AppDelegateTest, QuittingWhileRecordingLeavesNoRecording) {
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    ASSERT_EQ(filesLeft().size(), 1);
    delegate->applicationWillTerminate();
    delegate.reset();
    EXPECT_EQ(filesLeft(), Strings());
    EXPECT_TRUE(calls().contains(line(u"stopEngines")));
    EXPECT_EQ(platform.audioInput().running, 0);
}

TEST_F(AppDelegateTest, QuittingWhileTranscribingWaitsForNothingAndLeavesNoFile) {
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    platform.hotKeys().release();
    delegate->applicationWillTerminate();  // interrupts the transcription's wait
    delegate.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(AppDelegateTest, StateTextsAreFixedAndUnknownOnesAreNoState) {
    for (const State state :
         {State::idle, State::recording, State::transcribing, State::cleaning, State::typing}) {
        EXPECT_EQ(stateOf(statusText(state)), state);
    }
    EXPECT_EQ(stateOf(line(u"Pronto")), std::nullopt);
    EXPECT_EQ(stateOf({}), std::nullopt);
    EXPECT_EQ(statusText(State::cleaning), line(u"🪄 Pulizia testo…"));
    EXPECT_EQ(statusText(State::typing), line(u"\u2328\ufe0f Scrittura\u2026"));
    EXPECT_EQ(iconOf(State::typing).symbol, line(u"keyboard"));
    EXPECT_EQ(iconOf(State::cleaning).tint, Tint::Purple);
}

}  // namespace
}  // namespace parlivo
