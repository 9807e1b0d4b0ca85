#include "app/AppDelegate.h"
#include "settings/Config.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/NotificationCenter.h"
#include "support/PlatformTest.h"

#include <QCoreApplication>
#include <QDir>

#include <limits>
#include <mutex>

namespace parlivo {
namespace {

using namespace std::chrono_literals;
namespace Key = Config::Key;

/// The controller on the fake platform, with engines that answer as a test says. Transcription waits for
/// `answer`, so that a test can look at the states between.
class AppDelegateTest : public PlatformTest {
  protected:
    AppDelegateTest() {
        store(Key::onboardingDone, true);
        platform.bundle().resources[QStringLiteral("ggml-model.bin")] = QStringLiteral("/proc/self/exe");
    }

    ~AppDelegateTest() override {
        answered_.raise();
        delegate.reset();
    }

    AppDelegate& launch() {
        delegate = std::make_unique<AppDelegate>(collaborators(), [this] { return now_; });
        delegate->applicationDidFinishLaunching();
        return *delegate;
    }

    Collaborators collaborators() {
        Collaborators fake;
        const auto note = [this](const char* what) {
            return [this, what] { record(QString::fromLatin1(what)); };
        };
        fake.ensureTranscriber = note("ensureTranscriber");
        fake.ensureCleaner = note("ensureCleaner");
        fake.convert = [this](const QString& recording) { return convert(recording); };
        fake.transcribe = [this](const QString& wav) { return transcribe(wav); };
        fake.clean = [this](const QString& raw) { return raw + suffix; };
        fake.typeText = [this](const QString& text) { record(QStringLiteral("type ") + text); };
        fake.paste = [this](const QString& text) { record(QStringLiteral("paste ") + text); };
        fake.stopEngines = note("stopEngines");
        fake.showOnboarding = [this](std::function<void()> finished) {
            record(QStringLiteral("onboarding"));
            onboardingFinished = std::move(finished);
        };
        fake.startUpdater = [this](const std::function<void()>&) { record(QStringLiteral("updater")); };
        fake.availableVersion = [this] { return available; };
        fake.promptAndInstall = note("install");
        fake.showWhatsNew = note("whatsNew");
        fake.showSettings = note("settings");
        fake.showFeedback = note("feedback");
        fake.maybePromptForFeedback = note("invite");
        return fake;
    }

    /// Dictates for `length` and waits until the program is idle again.
    void dictate(const QString& text, std::chrono::milliseconds length = 500ms) {
        transcript = text;
        answer();
        platform.hotKeys().press();
        ageRecording(length);
        platform.hotKeys().release();
        spinUntil([this] { return delegate->state() == State::idle; });
    }

    void ageRecording(std::chrono::milliseconds length) { now_ += length; }
    void answer() { answered_.raise(); }

    void spinUntil(const std::function<bool()>& done) {
        const auto limit = Clock::now() + 10s;
        while (!done() && Clock::now() < limit) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        ASSERT_TRUE(done());
    }
    /// Lets everything that is queued happen.
    void settle() {
        bool reached = false;
        const Lifeline alive;
        MainQueue::after(0ms, alive.watch(), [&] { reached = true; });
        spinUntil([&] { return reached; });
    }

    void record(const QString& call) {
        const std::lock_guard lock(mutex_);
        calls_.append(call);
    }
    QStringList calls() {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    QStringList filesLeft() const { return QDir(platform.directories().temporary()).entryList(QDir::Files); }

    std::unique_ptr<AppDelegate> delegate;
    QString transcript = QStringLiteral("Ciao a tutti.");
    QString suffix;
    std::optional<Error> conversionError;
    std::optional<Error> transcriptionError;
    std::optional<QString> available;
    std::function<void()> onboardingFinished;

  private:
    QString convert(const QString& recording) {
        EXPECT_TRUE(QFile::exists(recording));
        if (conversionError) throw Error(*conversionError);
        const QString wav = recording.chopped(3) + QStringLiteral("wav");
        QFile file(wav);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(44, 'w'));
        return wav;
    }

    QString transcribe(const QString& wav) {
        EXPECT_TRUE(QFile::exists(wav));
        EXPECT_EQ(filesLeft().size(), 1) << "the recording is gone as soon as the WAV exists";
        answered_.wait();
        if (transcriptionError) throw Error(*transcriptionError);
        return transcript;
    }

    Clock::Signal answered_;
    Clock::TimePoint now_;
    std::mutex mutex_;
    QStringList calls_;  // under mutex_
};

using Strings = QStringList;

QString line(const char16_t* text) {
    return QStringView(text).toString();
}

TEST_F(AppDelegateTest, StartsUpInOrder) {
    launch();
    settle();
    EXPECT_EQ(delegate->state(), State::idle);
    EXPECT_EQ(delegate->statusLine(), line(u"Pronto — tieni premuto ⌥Spazio per dettare"));
    EXPECT_EQ(platform.hotKeys().registered.size(), 1U);
    EXPECT_EQ(platform.permissions().prompts, 1);
    EXPECT_EQ(platform.permissions().microphoneRequests, 1);
    EXPECT_EQ(logged(), Strings({line(u"permesso microfono: OK"), line(u"permesso accessibilità: OK")}));
    delegate.reset();  // waits for the warm-up
    const Strings made = calls();
    EXPECT_FALSE(made.contains(line(u"onboarding")));
    EXPECT_LT(made.indexOf(line(u"updater")), made.indexOf(line(u"whatsNew")));
}

TEST_F(AppDelegateTest, WarmsUpBothEnginesWhenAllIsReady) {
    launch();
    spinUntil([this] { return calls().contains(line(u"ensureCleaner")); });
    EXPECT_LT(calls().indexOf(line(u"ensureTranscriber")), calls().indexOf(line(u"ensureCleaner")));
}

TEST_F(AppDelegateTest, ShowsTheFirstRunUntilItIsDone) {
    store(Key::onboardingDone, false);
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
    store(Key::onboardingDone, false);
    launch();
    delegate.reset();
    onboardingFinished();
    EXPECT_FALSE(calls().contains(line(u"ensureTranscriber")));
}

TEST_F(AppDelegateTest, PushToTalkGoesRoundTheStates) {
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
    store(Key::dictationMode, line(u"toggle"));
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

TEST_F(AppDelegateTest, AnUnknownModeStartsAndIsNeverEndedByTheKey) {
    store(Key::dictationMode, line(u"hold"));
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::recording);
    platform.hotKeys().press();
    EXPECT_EQ(delegate->state(), State::recording);
    EXPECT_EQ(platform.audioInput().opened, 1);
    store(Key::dictationMode, line(u"ptt"));
    platform.hotKeys().release();
    EXPECT_EQ(delegate->state(), State::transcribing) << "read afresh on each event";
}

TEST_F(AppDelegateTest, APressWhileBusyDoesNothingInAnyMode) {
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    platform.hotKeys().release();
    for (const char16_t* mode : {u"ptt", u"toggle", u"boh"}) {
        store(Key::dictationMode, line(mode));
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

TEST_F(AppDelegateTest, EachMarkerMeansThatNobodySpoke) {
    launch();
    for (const char16_t* said :
         {u"", u"[BLANK_AUDIO]", u" [blank_audio] ", u"[Silenzio]", u"(SILENZIO)", u"[Musica]", u"[MUSIC]",
          u"♪", u"Una frase normale, lunga e sensata ♪", u"Sottotitoli e revisione a cura di QTSS"}) {
        dictate(line(said));
        EXPECT_EQ(delegate->statusLine(),
                  line(u"⚠️ Non ho sentito nulla — controlla il microfono nel menu"));
    }
    EXPECT_FALSE(calls().join(QLatin1Char(' ')).contains(line(u"type ")));
    EXPECT_EQ(Config::integer(Key::dictationCount, 0), 0);
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(AppDelegateTest, FifteenHundredCharactersAreTypedAndOneMoreIsPasted) {
    launch();
    const QString family = line(u"👨‍👩‍👧‍👦");
    for (const QString& character : {line(u"à"), family}) {
        dictate(character.repeated(1500));
        EXPECT_EQ(calls().filter(line(u"type ")).last(), line(u"type ") + character.repeated(1500));
        dictate(character.repeated(1501));
        EXPECT_EQ(calls().filter(line(u"paste ")).last(), line(u"paste ") + character.repeated(1501));
    }
}

TEST_F(AppDelegateTest, TheCeilingHoldsForWhatTheCleanerReturns) {
    launch();
    suffix = QString(1500, QLatin1Char('x'));
    dictate(line(u"y"));
    EXPECT_EQ(calls().filter(line(u"paste ")).size(), 1);
}

TEST_F(AppDelegateTest, InstantPastesASingleWord) {
    store(Key::typingSpeed, line(u"instant"));
    launch();
    dictate(line(u"Ciao"));
    EXPECT_TRUE(calls().contains(line(u"paste Ciao")));
}

TEST_F(AppDelegateTest, AHundredThousandCharactersArePasted) {
    launch();
    const QString text = line(u"parola ").repeated(14'286);
    dictate(text);
    EXPECT_TRUE(calls().contains(line(u"paste ") + text));
}

TEST_F(AppDelegateTest, WithoutThePermissionToTypeTheTextIsCopied) {
    platform.permissions().trusted = false;
    launch();
    dictate(line(u"Da incollare."));
    settle();
    ASSERT_EQ(platform.pasteboard().sets().size(), 1U);
    EXPECT_EQ(platform.pasteboard().sets()[0].text, line(u"Da incollare."));
    EXPECT_EQ(delegate->statusLine(),
              line(u"⚠️ Testo copiato negli appunti — manca il permesso Accessibilità (menu)"));
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Accessibility});
    EXPECT_TRUE(logged().contains(line(u"iniezione SALTATA: permesso accessibilità mancante")));
    EXPECT_EQ(Config::integer(Key::dictationCount, 0), 0);
    EXPECT_FALSE(calls().contains(line(u"invite")));
    EXPECT_EQ(filesLeft(), Strings());
}

TEST_F(AppDelegateTest, AFailedConversionIsSaidAndLeavesNoFile) {
    launch();
    conversionError = Error(ErrorCode::ConversionFailed, line(u"afconvert fallito: disco pieno"));
    dictate(line(u"perso"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ afconvert fallito: disco pieno"));
    EXPECT_TRUE(logged().contains(line(u"ERRORE pipeline: afconvert fallito: disco pieno")));
    EXPECT_EQ(filesLeft(), Strings());
    conversionError.reset();
    dictate(line(u"di nuovo"));
    EXPECT_TRUE(calls().contains(line(u"type di nuovo")));
}

TEST_F(AppDelegateTest, AFailedTranscriptionIsSaidAndLeavesNoFile) {
    launch();
    transcriptionError = Error(ErrorCode::WhisperNotResponding, line(u"whisper-server non risponde"));
    dictate(line(u"perso"));
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ whisper-server non risponde"));
    EXPECT_TRUE(logged().contains(line(u"ERRORE pipeline: whisper-server non risponde")));
    EXPECT_EQ(filesLeft(), Strings());
    EXPECT_EQ(Config::integer(Key::dictationCount, 0), 0);
}

TEST_F(AppDelegateTest, OnlyDebugModeLogsWhatWasSaid) {
    launch();
    dictate(line(u"segreto"));
    EXPECT_FALSE(logged().join(QLatin1Char(' ')).contains(line(u"segreto")));
    EXPECT_TRUE(logged().contains(line(u"trascrizione: 7 caratteri")));
    EXPECT_TRUE(logged().contains(line(u"audio convertito: 44 byte")));
    EXPECT_TRUE(logged().contains(line(u"iniezione completata (7 caratteri)")));
    store(Key::debugMode, true);
    dictate(line(u"palese"));
    EXPECT_TRUE(logged().contains(line(u"trascrizione grezza: \"palese\"")));
    EXPECT_TRUE(logged().contains(line(u"testo pulito: \"palese\"")));
}

TEST_F(AppDelegateTest, CountsTheDictationsThatArrived) {
    launch();
    for (int i = 1; i <= 3; ++i) {
        dictate(line(u"uno"));
        EXPECT_EQ(Config::integer(Key::dictationCount, 0), i);
    }
}

TEST_F(AppDelegateTest, ACountAtTheLargestIntegerIsFatalRatherThanWrong) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    store(Key::dictationCount, std::numeric_limits<qint64>::max());
    EXPECT_DEATH(
        {
            launch();
            dictate(line(u"uno"));
        },
        "dictationCount");
}

TEST_F(AppDelegateTest, SilentWhenSoundsAreOff) {
    store(Key::soundsEnabled, false);
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

TEST_F(AppDelegateTest, AnErrorGivesWayToTheIdleTextAfterEightSeconds) {
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
    const Lifeline alive;
    MainQueue::after(10s, alive.watch(), [&] { later = true; });
    spinUntil([&] { return later; });
    EXPECT_EQ(delegate->statusLine(), line(u"🔴 Registrazione…"));
}

TEST_F(AppDelegateTest, TheFirstOfTwoErrorsMayEndTheSecondEarly) {
    Clock::setScale(0.01);
    launch();
    delegate->showError(line(u"primo"));
    bool between = false;
    const Lifeline alive;
    MainQueue::after(4s, alive.watch(), [&] { between = true; });
    spinUntil([&] { return between; });
    delegate->showError(line(u"secondo"));
    bool firstOver = false;
    MainQueue::after(5s, alive.watch(), [&] { firstOver = true; });
    spinUntil([&] { return firstOver; });
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
}

TEST_F(AppDelegateTest, APresetChangeRegistersAnew) {
    launch();
    store(Key::hotkeyPreset, line(u"cmd-shift-space"));
    NotificationCenter::post(Config::pvHotkeyChanged);
    ASSERT_EQ(platform.hotKeys().registered.size(), 1U);
    EXPECT_EQ(platform.hotKeys().registered[0].modifiers, 0x0300U);
    delegate.reset();
    NotificationCenter::post(Config::pvHotkeyChanged);
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

TEST_F(AppDelegateTest, TheEndWhileRecordingLeavesNoRecording) {
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

TEST_F(AppDelegateTest, TheEndWhileTranscribingWaitsForNobodyAndLeavesNoFile) {
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
