// SPDX-License-Identifier: MIT
#include "AppDelegateFixture.h"
#include "app/DictationMark.h"
#include "app/menu/StatusMenu.h"
#include "support/AskedWaits.h"
#include "support/FileLock.h"
#include "support/Uuid.h"
#include "ui/views/Contrast.h"
#include "ui/views/SymbolIcon.h"

#include <QAction>
#include <QImage>

#include <atomic>
#include <map>
#include <thread>

namespace parlivo {
namespace {

using namespace std::chrono_literals;

using Foreground = StatusItemPlace::Foreground;
using Menus = StatusItemPlace::Menus;

/// What the controller shows, plays and stores, and in which order.
class AppDelegateIndicatorsTest : public AppDelegateTest {
  protected:
    AppDelegateIndicatorsTest() {
        const QString symbols = QStringLiteral(PARLIVO_RESOURCES "/symbols/");
        for (const char* name : {"mic", "mic.fill", "waveform", "wand.and.stars", "keyboard"}) {
            const QString file = QString::fromLatin1(name) + QStringLiteral(".svg");
            platform.bundle().resources[QStringLiteral("symbols/") + file] = symbols + file;
        }
    }

    StatusMenu& menu() const { return *delegate->findChild<StatusMenu*>(); }
    QAction* item(int number) const { return menu().menu().actions().at(number - 1); }
    QImage icon() const { return menu().icon().pixmap(32).toImage(); }
    const fake::FloatingPanel* card() { return platform.floatingPanels().panel; }

    /// Calls `look` at every change of state.
    void atEveryState(std::function<void(const QString& state)> look) {
        platform.remoteControl().onAnnounced = std::move(look);
    }
};

/// As dark as it takes to be seen there.
QColor onLightPanel(const QColor& colour) {
    return legible(colour, QColor(0xf0, 0xf0, 0xf0), drawingContrast);
}

TEST_F(AppDelegateIndicatorsTest, EachStateShowsItsSymbolInItsColour) {
    launch();
    platform.statusItems().report(StatusItemPlace{Foreground::Dark, Menus::DrawnByUs});
    const std::map<QString, QImage> expected{
        {line(u"idle"), SymbolIcon::icon(line(u"mic"), QColor(34, 34, 34)).pixmap(32).toImage()},
        {line(u"recording"),
         SymbolIcon::icon(line(u"mic.fill"), onLightPanel({255, 59, 48})).pixmap(32).toImage()},
        {line(u"transcribing"),
         SymbolIcon::icon(line(u"waveform"), onLightPanel({255, 149, 0})).pixmap(32).toImage()},
        {line(u"cleaning"),
         SymbolIcon::icon(line(u"wand.and.stars"), QColor(175, 82, 222)).pixmap(32).toImage()},
        {line(u"typing"), SymbolIcon::icon(line(u"keyboard"), QColor(0, 122, 255)).pixmap(32).toImage()},
    };
    EXPECT_EQ(icon(), expected.at(line(u"idle"))) << "at the start";
    QStringList seen;
    atEveryState([&](const QString& state) {
        seen.append(state);
        EXPECT_EQ(icon(), expected.at(state)) << state.toStdString();
    });
    dictate(line(u"Ciao."));
    EXPECT_EQ(seen.size(), 5);
}

TEST_F(AppDelegateIndicatorsTest, TheOverlayIsShownFromThePressToTheTyping) {
    launch();
    std::map<QString, bool> visible;
    atEveryState([&](const QString& state) { visible[state] = card() && card()->visible; });
    platform.hotKeys().press();
    ASSERT_NE(card(), nullptr);
    EXPECT_TRUE(card()->visible);
    ageRecording(1s);
    answer();
    platform.hotKeys().release();
    spinUntil([this] { return delegate->state() == State::idle; });
    EXPECT_TRUE(visible[line(u"transcribing")]);
    EXPECT_TRUE(visible[line(u"cleaning")]);
    EXPECT_FALSE(visible[line(u"idle")]);
    EXPECT_FALSE(card()->visible);
    EXPECT_EQ(card()->shown, 1);
}

TEST_F(AppDelegateIndicatorsTest, TheOverlayIsHiddenAfterATapAFailureAndSilence) {
    launch();
    platform.hotKeys().press();
    platform.hotKeys().release();
    EXPECT_FALSE(card()->visible) << "too short";
    transcriptionError = Error(ErrorCode::WhisperNotResponding, line(u"whisper-server non risponde"));
    dictate({});
    settle();
    EXPECT_FALSE(card()->visible) << "failed";
    transcriptionError.reset();
    dictate(line(u"[BLANK_AUDIO]"));
    settle();
    EXPECT_FALSE(card()->visible) << "nothing said";
    EXPECT_EQ(card()->shown, 3);
}

TEST_F(AppDelegateIndicatorsTest, TheOverlayIsHiddenAtTheProgramsEndAndCanBeSwitchedOff) {
    launch();
    platform.hotKeys().press();
    const bool visible = card()->visible;
    delegate->applicationWillTerminate();
    EXPECT_TRUE(visible);
    EXPECT_FALSE(card()->visible);
    delegate.reset();
    Clock::resume();
    store(Settings::overlayEnabled, false);
    const int made = platform.floatingPanels().made;
    launch();
    dictate(line(u"Senza riquadro."));
    EXPECT_EQ(platform.floatingPanels().made, made);
}

/// The rows of the card on which the ribbon has been drawn.
int heightOfRibbon(const QImage& card) {
    const QColor paper = card.pixelColor(card.width() / 2, 6);
    int rows = 0;
    for (int y = 6; y < card.height() - 6; ++y) {
        bool inked = false;
        for (int x = 20; x < card.width() - 20 && !inked; ++x) {
            inked = qAbs(card.pixelColor(x, y).lightness() - paper.lightness()) > 24;
        }
        rows += inked ? 1 : 0;
    }
    return rows;
}

TEST_F(AppDelegateIndicatorsTest, TheOverlayShowsTheRecordersLevel) {
    launch();
    platform.hotKeys().press();
    const int before = heightOfRibbon(card()->last);
    spinUntil([&] {
        platform.audioInput().speak(std::vector<float>(4800, 0.5F));
        return heightOfRibbon(card()->last) > before + 15;
    });
    ageRecording(1s);
    answer();
    platform.hotKeys().release();
    spinUntil([this] { return delegate->state() == State::idle; });
}

TEST_F(AppDelegateIndicatorsTest, EveryItemOfTheMenuDoesWhatItSays) {
    launch();
    available = line(u"2.0");
    Q_EMIT menu().menu().aboutToShow();
    item(3)->trigger();
    EXPECT_EQ(platform.workspace().panes, std::vector{PrivacyPane::Microphone});
    item(4)->trigger();
    EXPECT_EQ(platform.workspace().panes, (std::vector{PrivacyPane::Microphone, PrivacyPane::Accessibility}));
    for (const int number : {6, 7, 8}) item(number)->trigger();
    // The warm-ups are called from another thread: they may come in between.
    QStringList made = calls();
    made.removeIf([](const QString& call) { return call.startsWith(line(u"ensure")); });
    EXPECT_EQ(made.mid(made.indexOf(line(u"install"))),
              Strings({line(u"install"), line(u"settings"), line(u"feedback")}));
}

TEST_F(AppDelegateIndicatorsTest, TheMenuTellsThePermissionsAtTheStartAndAtEachOpening) {
    platform.permissions().microphoneStatus = MicrophoneStatus::Denied;
    platform.permissions().trusted = false;
    launch();
    EXPECT_EQ(item(3)->text(), line(u"Microfono: ⛔️ negato — clicca"));
    EXPECT_EQ(item(4)->text(), line(u"Accessibilità: ⛔️ manca — clicca"));
    EXPECT_FALSE(item(6)->isVisible());
    platform.permissions().microphoneStatus = MicrophoneStatus::Authorised;
    platform.permissions().trusted = true;
    available = line(u"2.0");
    EXPECT_EQ(item(3)->text(), line(u"Microfono: ⛔️ negato — clicca")) << "only when it opens";
    Q_EMIT menu().menu().aboutToShow();
    EXPECT_EQ(item(3)->text(), line(u"Microfono: ✅"));
    EXPECT_EQ(item(4)->text(), line(u"Accessibilità: ✅"));
    EXPECT_EQ(item(6)->text(), line(u"⬆️ Aggiorna a Parlivo 2.0…"));
    EXPECT_TRUE(item(6)->isVisible());
    available.reset();
    Q_EMIT menu().menu().aboutToShow();
    EXPECT_FALSE(item(6)->isVisible());
}

TEST_F(AppDelegateIndicatorsTest, AnInstallationIsShownAtOnceAndUntilItEnds) {
    available = line(u"2.0");
    launch();
    installing = line(u"2.0");
    ASSERT_TRUE(updaterChanged);
    updaterChanged();
    EXPECT_EQ(item(6)->text(), line(u"⬇️ Scarico Parlivo 2.0…"));
    EXPECT_FALSE(item(6)->isEnabled());
    installing.reset();
    updaterChanged();
    EXPECT_EQ(item(6)->text(), line(u"⬆️ Aggiorna a Parlivo 2.0…"));
    EXPECT_TRUE(item(6)->isEnabled());
}

TEST_F(AppDelegateIndicatorsTest, AChangeOfTheUpdaterDrawsTheStateAgain) {
    launch();
    delegate->showError(line(u"qualcosa"));
    ASSERT_TRUE(updaterChanged);
    updaterChanged();
    EXPECT_EQ(delegate->statusLine(), statusText(State::idle));
    delegate.reset();
    updaterChanged();  // its controller is gone
}

TEST_F(AppDelegateIndicatorsTest, AnErrorStaysForEightSecondsExactly) {
    launch();
    settle();
    const AskedWaits asked;
    delegate->showError(line(u"qualcosa"));
    EXPECT_EQ(asked.all(), std::vector<std::chrono::milliseconds>{8s});
}

TEST_F(AppDelegateIndicatorsTest, TheHotKeyComesAfterTheNotesOfANewVersion) {
    launch();
    EXPECT_TRUE(calls().contains(line(u"whatsNew")));
    EXPECT_EQ(hotKeysAtWhatsNew, 0U);
    EXPECT_EQ(platform.hotKeys().registered.size(), 1U);
}

TEST_F(AppDelegateIndicatorsTest, TheKeyboardIsPreparedAtTheStart) {
    launch();
    spinUntil([this] { return platform.keyboard().prepared == 1; });
}

TEST_F(AppDelegateIndicatorsTest, TheStartRemovesWhatADeadProgramLeft) {
    QFile stale(platform.directories().temporary() + line(u"/parlivo-") + freshUuid() + line(u".caf"));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();
    launch();
    spinUntil([&] { return !stale.exists(); });
}

const QString lost =
    QStringLiteral("L'ultima dettatura è andata persa: Parlivo si è chiuso prima di finirla");

/// Launches and waits until what was left behind has been looked for and told.
class LostDictationTest : public AppDelegateIndicatorsTest {
  protected:
    void launchAndLook() {
        const int before = platform.keyboard().prepared;
        launch();
        // Prepared after that, on the same queue.
        spinUntil([&] { return platform.keyboard().prepared > before; });
        settle();
    }
    QString temporary() const { return platform.directories().temporary(); }
    QString freshMark() const {
        return temporary() + line(u"/.parlivo-") + freshUuid() + line(u".dictation");
    }
    QStringList hiddenFilesLeft() const { return QDir(temporary()).entryList(QDir::Files | QDir::Hidden); }
};

TEST_F(LostDictationTest, TheNextStartTellsOnceOfADictationThatWasCutShort) {
    {
        // What a killed program leaves: a file that nobody holds.
        QFile mark(freshMark());
        ASSERT_TRUE(mark.open(QIODevice::WriteOnly));
    }
    launch();
    spinUntil([&] { return platform.notifications().texts.contains(lost); });
    EXPECT_EQ(delegate->statusLine(), line(u"⚠️ ") + lost);
    delegate.reset();
    launchAndLook();
    EXPECT_EQ(platform.notifications().texts.count(lost), 1);
}

TEST_F(LostDictationTest, AProgramThatIsEndedWhileItRecordsHasNothingToTell) {
    launch();
    platform.hotKeys().press();
    ageRecording(1s);
    delegate->applicationWillTerminate();
    delegate.reset();
    Clock::resume();
    EXPECT_EQ(hiddenFilesLeft(), Strings()) << "no recording, no mark";
    launchAndLook();
    EXPECT_FALSE(platform.notifications().texts.contains(lost));
}

TEST_F(LostDictationTest, ADictationThatCameToItsEndIsNotTakenForLost) {
    launch();
    dictate(line(u"Ciao."));
    dictate(line(u"[silenzio]"));
    dictate({}, 100ms);  // too short
    delegate->applicationWillTerminate();
    delegate.reset();
    Clock::resume();
    launchAndLook();
    EXPECT_FALSE(platform.notifications().texts.contains(lost));
    EXPECT_EQ(hiddenFilesLeft(), Strings());
}

TEST_F(LostDictationTest, TheFirstDictationAfterTheStartIsNotTakenForLost) {
    // As early as the look for what was left, which meets its file at any moment of its life.
    std::atomic<bool> ended = false;
    std::atomic<bool> found = false;
    std::thread look([&] {
        while (!ended) found = takeLeftMarks() || found;
    });
    for (int i = 0; i < 2000; ++i) const DictationMark mark;
    ended = true;
    look.join();
    EXPECT_FALSE(found);
}

TEST_F(LostDictationTest, TheDictationOfAnotherSessionIsNotLost) {
    const QString others = freshMark();
    const UniqueFd held = createLockedFile(others, 0600);
    ASSERT_TRUE(held);
    launchAndLook();
    EXPECT_FALSE(platform.notifications().texts.contains(lost));
    EXPECT_TRUE(QFile::exists(others));
}

TEST_F(AppDelegateIndicatorsTest, SoundsStatesAndCountComeInTheirOrder) {
    launch();
    QStringList order;
    qint64 countWhenIdle = -1;
    atEveryState([&](const QString& state) {
        order.append(platform.sounds().played.join(u'+') + u':' + state);
        if (state == line(u"idle")) countWhenIdle = Config::get(Settings::dictationCount);
    });
    dictate(line(u"Ciao."));
    EXPECT_EQ(order, Strings({line(u":recording"), line(u"Tink+Pop:transcribing"), line(u"Tink+Pop:cleaning"),
                              line(u"Tink+Pop:typing"), line(u"Tink+Pop:idle")}));
    EXPECT_EQ(countWhenIdle, 0) << "counted once the program is idle";
    EXPECT_EQ(countAtInvitation, 1) << "and before the invitation is considered";
}

}  // namespace
}  // namespace parlivo
