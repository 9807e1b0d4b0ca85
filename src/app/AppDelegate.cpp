// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/StaleFiles.h"
#include "input/HotKeyChoice.h"
#include "input/HotKeyStatus.h"
#include "models/ModelPaths.h"
#include "models/ModelsMove.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "settings/SettingsNotifier.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/MainQueue.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QTimer>

#include <limits>
#include <memory>
#include <utility>

namespace parlivo {

namespace {

constexpr qsizetype errorLength = 80;  // characters
constexpr std::chrono::seconds errorStay{8};

bool soundsOn() {
    return Config::get(Settings::soundsEnabled);
}

void playIfWanted(const QString& sound) {
    if (soundsOn()) Platform::current().sounds().play(sound);
}

QString answerWord(bool granted) {
    return granted ? QStringLiteral("OK") : QStringLiteral("NEGATO");
}

}  // namespace

AppDelegate::AppDelegate(Collaborators collaborators, AudioRecorder::Now now)
    : collaborators_(std::move(collaborators)),
      notices_({.showDownloads = collaborators_.showRecognisers,
                .showHotKeyChoice = collaborators_.showHotKeyChoice}),
      recorder_(std::move(now)),
      step_(collaborators_, stepObserver()) {}

AppDelegate::~AppDelegate() {
    // The hot key's end is a change, too.
    disconnect(&HotKeyStatus::shared(), nullptr, this, nullptr);
}

void AppDelegate::applicationDidFinishLaunching() {
    pipelineQueue_.async([this] {
        if (takeLeftMarks()) MainQueue::async(lifetime_.token(), [this] { tellOfLostDictation(); });
        removeStaleFiles();
    });
    ModelsMove::recover();
    chooseMicrophone();
    setupStatusItem();
    const QPointer self(this);
    overlay_.setLevelProvider([self] { return self ? self->recorder_.level() : 0.0F; });
    const bool ready = Config::get(Settings::onboardingDone) && Config::hasUsableModel();
    if (ready) {
        requestPermissions();
    } else {
        collaborators_.showOnboarding({.onFinished =
                                           [self] {
                                               if (self)
                                                   self->pipelineQueue_.async(
                                                       self->collaborators_.ensureTranscriber);
                                           },
                                       .onPutOff =
                                           [self] {
                                               if (self) self->showPutOffFirstRun(FirstRun::PutOff);
                                           }});
    }
    collaborators_.startUpdater([self] {
        if (!self) return;
        self->updateUI();
        self->showUpdate();
    });
    collaborators_.showWhatsNew();
    installHotKey();
    pipelineQueue_.async([] { Platform::current().keyboard().prepare(); });
    if (ready) warmUp();
}

void AppDelegate::applicationWillTerminate() {
    Clock::interruptAll();
    recorder_.onInterrupted = nullptr;
    if (state_ == State::recording) {
        if (const auto recording = recorder_.stop()) QFile::remove(*recording);
        overlay_.hide();
    }
    if (mark_) Log::info(QStringLiteral("dettatura interrotta: il programma termina"));
    mark_.reset();  // who ends the program knows
    collaborators_.stopEngines();
}

void AppDelegate::installHotKey() {
    hotKey_.onKeyDown = [this] { keyDown(HotKeyChoice::modeInForce()); };
    hotKey_.onKeyUp = [this] { keyUp(HotKeyChoice::modeInForce()); };
    connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, this, [this] { showHotKeyStatus(); });
    hotKey_.applyCurrentPreset();
    connect(&SettingsNotifier::shared(), &SettingsNotifier::pvHotkeyChanged, this, [this] {
        // The idle text names the key.
        if (state_ == State::idle) updateUI();
        hotKey_.applyCurrentPreset();
    });
    // When the microphone is unplugged, the recording ends as if the key had been released.
    recorder_.onInterrupted = [this] { stopAndProcess(); };
}

/// A first run that was put off comes first: without it there is little to set.
void AppDelegate::showSettings() {
    if (collaborators_.resumeOnboarding()) {
        showPutOffFirstRun(FirstRun::OnScreen);
    } else {
        collaborators_.showSettings();
    }
}

void AppDelegate::showPutOffFirstRun(FirstRun firstRun) {
    firstRun_ = firstRun;
    showHotKeyStatus();
}

/// The idle text names the key, or says what is wrong with it.
void AppDelegate::showHotKeyStatus() {
    const auto warning = HotKeyStatus::shared().warning();
    if (firstRun_ == FirstRun::PutOff) {
        menu_->setTitleAction([this] { showSettings(); });
    } else {
        menu_->setTitleAction(warning ? collaborators_.showHotKeyChoice : nullptr);
    }
    if (state_ == State::idle) updateUI();
    notices_.showHotKey(warning);
}

void AppDelegate::warmUp() {
    pipelineQueue_.async([this] {
        collaborators_.ensureTranscriber();
        collaborators_.ensureCleaner();
    });
}

/// Neither its sound nor its text is there any more.
void AppDelegate::tellOfLostDictation() {
    Log::info(QStringLiteral("la dettatura precedente non è arrivata alla fine: il programma si era chiuso"));
    showError(tr("L'ultima dettatura è andata persa: Parlivo si è chiuso prima di finirla"), Remedy::OpenLog);
}

void AppDelegate::keyDown(DictationMode mode) {
    if (mode == DictationMode::Toggle) {
        toggle();
    } else {
        startRecording();
    }
}

void AppDelegate::keyUp(DictationMode mode) {
    // An unknown mode starts a recording on the key press and never ends it by key; that is intended.
    if (mode == DictationMode::PushToTalk) stopAndProcess();
}

void AppDelegate::toggle() {
    if (state_ == State::recording) {
        stopAndProcess();
    } else {
        startRecording();
    }
}

void AppDelegate::perform(RemoteCommand command) {
    switch (command) {
        case RemoteCommand::Press:
            // Who sends this tells of the release, too, whatever the system does for the hot key.
            return keyDown(Config::get(Settings::dictationMode));
        case RemoteCommand::Release:
            return keyUp(Config::get(Settings::dictationMode));
        case RemoteCommand::Toggle:
            return toggle();
        case RemoteCommand::ShowSettings:
            return showSettings();
        case RemoteCommand::ShowFeedback:
            return collaborators_.showFeedback();
        case RemoteCommand::Quit:
            return QCoreApplication::quit();
    }
}

void AppDelegate::startRecording() {
    if (state_ != State::idle) return;
    chooseMicrophone();
    try {
        recorder_.start();
    } catch (const Error& error) {
        if (!error.detail().isEmpty()) Log::info(QStringLiteral("dettaglio: ") + error.detail());
        showError(tr("Impossibile avviare la registrazione: %1").arg(error.localizedDescription()),
                  remedyFor(error));
        return;
    }
    mark_.emplace();
    setState(State::recording);
    if (Config::get(Settings::overlayEnabled)) overlay_.show();
    playIfWanted(QStringLiteral("Tink"));
}

void AppDelegate::chooseMicrophone() {
    Platform::current().audioInput().choose(Config::get(Settings::microphone));
}

void AppDelegate::stopAndProcess() {
    if (state_ != State::recording) return;
    // The job owns the recording, so that a job that is dropped at the program's end deletes it too. It locks
    // the file before the recorder unlocks it, so that the file never looks stale.
    auto recording = std::make_shared<ScopedFile>(recorder_.currentURL().value());
    if (!recorder_.stop()) {
        setState(State::idle);
        overlay_.hide();
        return;
    }
    // Queued before the sound is played and the icon is drawn, so that the engine works meanwhile.
    pipelineQueue_.async([this, recording = std::move(recording)] { step_.run(*recording); });
    playIfWanted(QStringLiteral("Pop"));
    setState(State::transcribing);
    overlay_.rest();
}

PipelineStep::Observer AppDelegate::stepObserver() {
    return {
        .onCleaning = [this] { setState(State::cleaning); },
        .onTyping =
            [this] {
                setState(State::typing);
                overlay_.hide();
            },
        .onDone =
            [this] {
                setState(State::idle);
                countDictation();
                collaborators_.maybePromptForFeedback();
            },
        .onFailure =
            [this](const QString& message, Remedy remedy) {
                setState(State::idle);
                overlay_.hide();
                showError(message, remedy);
            },
    };
}

void AppDelegate::countDictation() {
    const qint64 count = Config::get(Settings::dictationCount);
    if (count == std::numeric_limits<qint64>::max()) qFatal("dictationCount overflow");
    Config::set(Settings::dictationCount, count + 1);
}

void AppDelegate::setupStatusItem() {
    auto& workspace = Platform::current().workspace();
    const StatusMenu::Actions actions{
        .willOpen = [this] { menuWillOpen(); },
        .openMicSettings = [&workspace] { workspace.openPrivacyPane(PrivacyPane::Microphone); },
        .openAccessibilitySettings = [&workspace] { workspace.openPrivacyPane(PrivacyPane::Accessibility); },
        .installUpdate = collaborators_.promptAndInstall,
        .openSettings = collaborators_.showSettings,
        .openFeedback = collaborators_.showFeedback,
        .quit = [] { QCoreApplication::quit(); },
    };
    menu_ = new StatusMenu(actions, this);
    updateUI();
    menuWillOpen();
    Platform::current().permissions().observeMicrophone(
        this, [this](MicrophoneStatus status) { menu_->setMicrophone(status); });
}

void AppDelegate::menuWillOpen() {
    HotKeyStatus::shared().look();
    auto& permissions = Platform::current().permissions();
    menu_->setMicrophone(permissions.microphone());
    menu_->setAccessibility(permissions.accessibilityTrusted(Permissions::Prompt::No));
    showUpdate();
}

void AppDelegate::showUpdate() {
    if (const auto installing = collaborators_.installingVersion()) {
        menu_->setUpdate(installing, UpdateStage::UnderWay);
    } else {
        menu_->setUpdate(collaborators_.availableVersion());
    }
}

void AppDelegate::requestPermissions() {
    auto& permissions = Platform::current().permissions();
    permissions.requestMicrophone(MicrophoneCheck::WithoutRecording, [](bool granted) {
        Log::info(QStringLiteral("permesso microfono: ") + answerWord(granted));
    });
    const bool trusted = permissions.accessibilityTrusted(Permissions::Prompt::Yes);
    Log::info(QStringLiteral("permesso accessibilità: ") + answerWord(trusted));
}

void AppDelegate::setState(State state) {
    state_ = state;
    if (state == State::idle) mark_.reset();
    updateUI();
    Platform::current().remoteControl().announceState(caseName(state));
}

void AppDelegate::updateUI() {
    menu_->setTitle(titleOf(state_));
    const StateIcon icon = iconOf(state_);
    menu_->setIcon(icon.symbol, icon.tint);
}

QString AppDelegate::titleOf(State state) const {
    if (state == State::idle && firstRun_ == FirstRun::PutOff)
        return tr("⚠️ Configurazione da finire — clicca per riprendere");
    const auto warning = state == State::idle ? HotKeyStatus::shared().warning() : std::nullopt;
    return warning ? tr("⚠️ %1").arg(*warning) : statusText(state);
}

QString AppDelegate::statusLine() const {
    return menu_ ? menu_->title() : statusText(state_);
}

void AppDelegate::showError(const QString& message, Remedy remedy) {
    notices_.show(message, remedy);
    playIfWanted(QStringLiteral("Basso"));
    menu_->setTitle(tr("⚠️ %1").arg(Text::firstCharacters(message, errorLength)));
    QTimer::singleShot(Clock::scaled(errorStay), Qt::PreciseTimer, this, [this] {
        if (state_ == State::idle) menu_->setTitle(titleOf(State::idle));
    });
}

}  // namespace parlivo
