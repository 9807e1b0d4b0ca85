// SPDX-License-Identifier: MIT
#include "desktop/stress/Storm.h"

#include "desktop/stress/Footprint.h"
#include "support/PresetKeys.h"
#include "support/SoundServer.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace parlivo::desktop {

namespace {

using namespace std::chrono_literals;

/// In no window of the program does a key of it do anything.
const QString word = QStringLiteral("xqz");

/// The longest that the program may be busy after the last action: an engine that was killed is started anew.
constexpr auto restLimit = 60s;

const QString settingsTitle = QStringLiteral("Impostazioni Parlivo");
const QString mode = QStringLiteral("dictationMode");
const QString speed = QStringLiteral("typingSpeed");

/// As the settings window lists them.
const std::vector<Preset>& presets() {
    return HotKeyManager::presets();
}

std::vector<pid_t> childrenNamed(const QString& name) {
    std::vector<pid_t> found;
    for (const pid_t process : processesNamed(QStringLiteral("stub_engine"))) {
        QFile file(QStringLiteral("/proc/%1/comm").arg(process));
        if (file.open(QIODevice::ReadOnly) && QString::fromUtf8(file.readAll()).trimmed() == name)
            found.push_back(process);
    }
    return found;
}

}  // namespace

const std::vector<Storm::Action>& Storm::actions() {
    static const std::vector<Action> all{
        {"tap", 6, &Storm::tap},
        {"hold", 6, &Storm::hold},
        {"press", 3, &Storm::pressAndKeep},
        {"let go", 3, &Storm::releaseKeys},
        {"bus press", 2, &Storm::busPress},
        {"bus release", 2, &Storm::busRelease},
        {"bus toggle", 2, &Storm::busToggle},
        {"second start", 1, &Storm::startSecondInstance},
        {"plain second start", 0.1, &Storm::startSecondInstanceWithoutOption},
        {"mode", 3, &Storm::changeMode},
        {"speed", 2, &Storm::changeSpeed},
        {"preset", 0.3, &Storm::changePreset},
        {"settings", 0.2, &Storm::showSettings},
        {"feedback", 0.2, &Storm::showFeedback},
        {"menu", 0.4, &Storm::chooseFromMenu},
        {"kill engine", 1, &Storm::killEngine},
        {"restart sound", 0.05, &Storm::restartSoundServer},
        {"lose keyboards", 0.7, &Storm::loseKeyboards},
        {"lock screen", 0.7, &Storm::lockScreen},
        {"pause", 4, &Storm::pause},
    };
    return all;
}

Storm::Storm() {
    home::settle(
        {{QStringLiteral("cleanupTier"), QStringLiteral("light")}, {QStringLiteral("feedbackGiven"), true}});
    engines_.setTranscript(word);
    program_ = std::make_unique<Program>(engines_.bundle());
    receiver_ = std::make_unique<Receiver>(Receiver::Kind::Qt);
}

void Storm::SetUp() {
    ASSERT_TRUE(program_->waitUntilUp());
    ASSERT_TRUE(Program::waitUntilServed(StubEngines::recogniserUrl));
    // Not earlier: it answers only while the test waits for nothing else.
    panel_ = std::make_unique<NotifierWatcher>();
    ASSERT_TRUE(waitFor([this] { return !panel_->items().isEmpty(); }));
    findPresets();
}

/// Opens the settings where the hot key is chosen. The window keeps the place.
void Storm::findPresets() {
    showWindow("ShowSettings");
    ASSERT_TRUE(waitForActiveWindow(settingsTitle));
    keyboard_.press(Key::leftControl);
    keyboard_.tap(keyboard_.keyOf(XKB_KEY_Tab));
    keyboard_.release(Key::leftControl);
    ASSERT_TRUE(waitFor([this] {
        keyboard_.tap(keyboard_.keyOf(XKB_KEY_Tab));
        keyboard_.tap(keyboard_.keyOf(XKB_KEY_Down));
        return waitFor([] { return preset() != 0; }, 1500ms);
    }));
    stepPreset(keyboard_.keyOf(XKB_KEY_Up));
    receiver_->focus();
}

int Storm::preset() {
    const QString id = home::settings().value(QLatin1String("hotkeyPreset")).toString(presets().at(0).id);
    return static_cast<int>(std::ranges::find(presets(), id, &Preset::id) - presets().begin());
}

void Storm::stepPreset(xcb_keycode_t key) {
    const int before = preset();
    keyboard_.tap(key);
    EXPECT_TRUE(waitFor([before] { return preset() != before; }));
    chord_ = chordOf(presets().at(static_cast<std::size_t>(preset())));
}

void Storm::changePreset() {
    // A held modifier would make something else of the arrow keys.
    releaseKeys();
    showWindow("ShowSettings");
    ASSERT_TRUE(waitForActiveWindow(settingsTitle));
    const bool down = preset() == 0 || (preset() + 1 < std::ssize(presets()) && coinFlip());
    stepPreset(keyboard_.keyOf(down ? XKB_KEY_Down : XKB_KEY_Up));
    if (coinFlip()) receiver_->focus();
}

void Storm::run(std::uint32_t seed) {
    random_.seed(seed);
    happened_.clear();
    recordingMayStay_ = false;
    textMayBeElsewhere_ = false;
    textsBefore_ = texts();
    home::set({{mode, QStringLiteral("ptt")}, {speed, QStringLiteral("fast")}});
    const int length = 5 + randomUpTo(10);
    std::vector<double> weights;
    for (const Action& action : actions()) weights.push_back(action.weight);
    std::discrete_distribution<std::size_t> choice(weights.begin(), weights.end());
    for (int i = 0; i < length; ++i) {
        const Action& action = actions().at(choice(random_));
        happened_ += std::string(action.name) + ", ";
        (this->*action.happen)();
    }
    waitUntilIdle();
    if (HasFailure()) std::cerr << "seed " << seed << ": " << happened_ << std::endl;
}

int Storm::randomUpTo(int limit) {
    // Not std::uniform_int_distribution, whose numbers differ from library to library.
    return static_cast<int>(random_() % (static_cast<unsigned>(limit) + 1));
}

void Storm::pressKeys() {
    // A key that is typed in the very moment in which the hot key goes down belongs to the hot key.
    const QString state = program_->state();
    if (state != QLatin1String("idle") && state != QLatin1String("recording")) textMayBeElsewhere_ = true;
    // Fingers leave a key before they press it again.
    if (keysDown_) releaseKeys();
    press(chord_);
    keysDown_ = true;
}

void Storm::tap() {
    pressKeys();
    releaseKeys();
}

void Storm::hold() {
    pressKeys();
    letPass(std::chrono::milliseconds(randomUpTo(500)));
    // The modifier may come up first.
    if (coinFlip()) release(Chord(chord_.rbegin(), chord_.rend()));
    releaseKeys();
}

void Storm::pressAndKeep() {
    pressKeys();
}

void Storm::releaseKeys() {
    release(chord_);
    keysDown_ = false;
}

void Storm::busPress() {
    recordingMayStay_ = true;
    EXPECT_TRUE(program_->invoke("Press"));
}

void Storm::busRelease() {
    EXPECT_TRUE(program_->invoke("Release"));
}

void Storm::busToggle() {
    recordingMayStay_ = true;
    EXPECT_TRUE(program_->invoke("Toggle"));
}

void Storm::startSecondInstance() {
    const QStringList options{QStringLiteral("--press"), QStringLiteral("--release"),
                              QStringLiteral("--toggle")};
    recordingMayStay_ = true;
    EXPECT_EQ(Program::call({options.at(randomUpTo(2))}, engines_.bundle()).status, 0);
}

void Storm::startSecondInstanceWithoutOption() {
    textMayBeElsewhere_ = true;
    EXPECT_EQ(Program::call({}, engines_.bundle()).status, 0);
}

void Storm::changeMode() {
    const QStringList modes{QStringLiteral("ptt"), QStringLiteral("toggle"), QStringLiteral("unknown")};
    recordingMayStay_ = true;
    home::set(mode, modes.at(randomUpTo(2)));
}

void Storm::changeSpeed() {
    const QStringList speeds{QStringLiteral("fast"), QStringLiteral("natural"), QStringLiteral("instant")};
    home::set(speed, speeds.at(randomUpTo(2)));
}

void Storm::showSettings() {
    showWindow("ShowSettings");
}

void Storm::showFeedback() {
    showWindow("ShowFeedback");
}

void Storm::showWindow(const char* method) {
    textMayBeElsewhere_ = true;
    EXPECT_TRUE(program_->invoke(method));
}

void Storm::chooseFromMenu() {
    textMayBeElsewhere_ = true;
    const NotifierItem item(panel_->bus(), panel_->items().value(0));
    item.openMenu();
    item.choose(coinFlip() ? QStringLiteral("Impostazioni…") : QStringLiteral("Invia feedback…"));
}

void Storm::killEngine() {
    const auto name = coinFlip() ? QStringLiteral("whisper-server") : QStringLiteral("llama-server");
    for (const pid_t process : childrenNamed(name)) ::kill(process, SIGKILL);
}

void Storm::restartSoundServer() {
    endSoundServer();
    letPass(std::chrono::milliseconds(randomUpTo(300)));
    startSoundServer();
}

void Storm::loseKeyboards() {
    textMayBeElsewhere_ = true;
    other_.setKeyboardsEnabled(false);
    if (coinFlip()) releaseKeys();
    letPass(std::chrono::milliseconds(randomUpTo(300)));
    other_.setKeyboardsEnabled(true);
}

void Storm::lockScreen() {
    // Refused while the key is held, as for a real one.
    textMayBeElsewhere_ = true;
    other_.grabKeyboard();
    if (coinFlip()) tap();
    if (coinFlip()) releaseKeys();
    letPass(std::chrono::milliseconds(randomUpTo(300)));
    other_.ungrabKeyboard();
}

void Storm::pause() {
    letPass(std::chrono::milliseconds(randomUpTo(200)));
}

void Storm::waitUntilIdle() {
    releaseKeys();
    expectIdle();
    EXPECT_TRUE(waitFor([] { return recordingStreams().isEmpty(); })) << "the microphone is open";
    EXPECT_TRUE(waitFor([] { return home::recordings().isEmpty(); }));
    expectOneOfEach();
    expectOnlyDictatedText();
    // The next sequence begins as this one did.
    if (preset() == 0) return;
    showWindow("ShowSettings");
    ASSERT_TRUE(waitForActiveWindow(settingsTitle));
    while (preset() != 0 && !HasFailure()) stepPreset(keyboard_.keyOf(XKB_KEY_Up));
    receiver_->focus();
}

void Storm::expectIdle() {
    const bool idle = waitFor(
        [this] {
            const QString state = program_->state();
            if (recordingMayStay_ && state == QLatin1String("recording")) endRecording();
            return state == QLatin1String("idle");
        },
        restLimit);
    EXPECT_TRUE(idle) << qPrintable(program_->state());
}

/// As whoever began it would.
void Storm::endRecording() {
    letPass(50ms);
    EXPECT_TRUE(program_->invoke("Toggle"));
}

void Storm::expectOneOfEach() {
    EXPECT_TRUE(program_->isRunning());
    EXPECT_EQ(processesNamed(QStringLiteral("Parlivo")), std::vector{program_->processId()});
    const auto oneOfEach = [this] {
        QStringList children = Footprint::of(program_->processId()).children;
        return children.filter(QStringLiteral(" Z")).isEmpty() && children.removeDuplicates() == 0 &&
               children.size() <= 2;
    };
    EXPECT_TRUE(waitFor(oneOfEach)) << qPrintable(
        Footprint::of(program_->processId()).children.join(QLatin1Char(',')));
    for (int key = 8; key < 256; ++key)
        EXPECT_FALSE(keyboard_.isDown(static_cast<xcb_keycode_t>(key))) << key;
}

void Storm::expectOnlyDictatedText() {
    receiver_->focus();
    const auto isWhole = [this] { return receiver_->text() == word.repeated(texts() - textsBefore_); };
    const auto isOfWord = [this] {
        const QString text = receiver_->text();
        return std::ranges::all_of(text, [](QChar character) { return word.contains(character); });
    };
    EXPECT_TRUE(textMayBeElsewhere_ ? isOfWord() : waitFor(isWhole, 5s))
        << texts() - textsBefore_ << " times, but: " << qPrintable(receiver_->text());
    EXPECT_TRUE(waitFor([this] {
        keyboard_.press(Key::leftControl);
        keyboard_.tap(keyboard_.keyOf(XKB_KEY_l));
        keyboard_.release(Key::leftControl);
        return receiver_->waitForText({}, 300ms);
    })) << qPrintable(receiver_->text());
}

qsizetype Storm::texts() {
    return home::log().count(QStringLiteral("iniezione completata"));
}

}  // namespace parlivo::desktop
