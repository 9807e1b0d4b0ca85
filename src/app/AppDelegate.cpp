// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "app/StaleFiles.h"
#include "models/ModelPaths.h"
#include "models/ModelsMove.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "settings/SettingsNotifier.h"
#include "support/Clock.h"
#include "support/Error.h"
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
      recorder_(std::move(now)),
      step_(collaborators_, stepObserver()) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    pipelineQueue_.async(removeStaleFiles);
    ModelsMove::recover();
    chooseMicrophone();
    setupStatusItem();
    const QPointer self(this);
    overlay_.setLevelProvider([self] { return self ? self->recorder_.level() : 0.0F; });
    const bool ready = Config::get(Settings::onboardingDone) && Config::hasUsableModel();
    if (ready) {
        requestPermissions();
    } else {
        collaborators_.showOnboarding([self] {
            if (self) self->pipelineQueue_.async(self->collaborators_.ensureTranscriber);
        });
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
    collaborators_.stopEngines();
}

void AppDelegate::installHotKey() {
    hotKey_.onKeyDown = [this] { keyDown(); };
    hotKey_.onKeyUp = [this] { keyUp(); };
    hotKey_.applyCurrentPreset();
    connect(&SettingsNotifier::shared(), &SettingsNotifier::pvHotkeyChanged, this, [this] {
        // The idle text names the key.
        if (state_ == State::idle) updateUI();
        hotKey_.applyCurrentPreset();
    });
    // When the microphone is unplugged, the recording ends as if the key had been released.
    recorder_.onInterrupted = [this] { stopAndProcess(); };
}

void AppDelegate::warmUp() {
    pipelineQueue_.async([this] {
        collaborators_.ensureTranscriber();
        collaborators_.ensureCleaner();
    });
}

void AppDelegate::keyDown() {
    if (Config::get(Settings::dictationMode) == DictationMode::Toggle) {
        toggle();
    } else {
        startRecording();
    }
}

void AppDelegate::keyUp() {
    // An unknown mode starts a recording on the key press and never ends it by key; that is intended.
    if (Config::get(Settings::dictationMode) == DictationMode::PushToTalk) stopAndProcess();
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
            return keyDown();
        case RemoteCommand::Release:
            return keyUp();
        case RemoteCommand::Toggle:
            return toggle();
        case RemoteCommand::ShowSettings:
            return collaborators_.showSettings();
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
        showError(tr("Impossibile avviare la registrazione: %1").arg(error.localizedDescription()));
        return;
    }
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
            [this](const QString& message) {
                setState(State::idle);
                overlay_.hide();
                showError(message);
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
    updateUI();
    Platform::current().remoteControl().announceState(caseName(state));
}

void AppDelegate::updateUI() {
    menu_->setTitle(statusText(state_));
    const StateIcon icon = iconOf(state_);
    menu_->setIcon(icon.symbol, icon.tint);
}

QString AppDelegate::statusLine() const {
    return menu_ ? menu_->title() : statusText(state_);
}

void AppDelegate::showError(const QString& message) {
    playIfWanted(QStringLiteral("Basso"));
    menu_->setTitle(tr("⚠️ %1").arg(Text::firstCharacters(message, errorLength)));
    QTimer::singleShot(Clock::scaled(errorStay), Qt::PreciseTimer, this, [this] {
        if (state_ == State::idle) menu_->setTitle(statusText(State::idle));
    });
}

}  // namespace parlivo
