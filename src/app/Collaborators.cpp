// SPDX-License-Identifier: MIT
#include "app/Collaborators.h"

#include "audio/AudioRecorder.h"
#include "engines/Cleaner.h"
#include "engines/CleanupPrompt.h"
#include "engines/LlamaRunner.h"
#include "engines/Transcriber.h"
#include "input/Injector.h"
#include "models/ModelsMover.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/settings/SettingsWindowController.h"
#include "update/Updater.h"
#include "update/WhatsNew.h"
#include "update/feedback/FeedbackWindowController.h"

#include <QCoreApplication>

#include <memory>
#include <utility>

namespace parlivo {

namespace {

void endEngines() {
    Transcriber::stopServer();
    LlamaRunner::shutdown();
}

/// The windows, which are kept once they have been shown, and the updater. Every function below shares the
/// ownership.
struct Owned {
    ModelsMover modelsMover;
    OnboardingWindowController onboarding;
    FeedbackWindowController feedback;
    SettingsWindowController settings{{
        .stopTranscriber = Transcriber::stopServer,
        .stopCleaner = LlamaRunner::shutdown,
        .preparePrompt = [] { Config::loadPrompt(); },
        .showFeedback = [this] { feedback.show(); },
        .quit = [] { QCoreApplication::quit(); },
        .moveModels = [this](const QString& to,
                             std::function<void()> onAdopted) { modelsMover.move(to, std::move(onAdopted)); },
    }};
    Updater updater{{.stopEngines = endEngines, .quit = [] { QCoreApplication::quit(); }}};
};

}  // namespace

Collaborators Collaborators::real() {
    const auto owned = std::make_shared<Owned>();
    owned->onboarding.chooseHotKey = [settings = &owned->settings] {
        settings->show(SettingsPage::Dictation);
    };
    return {
        .ensureTranscriber = Transcriber::ensureServer,
        .ensureCleaner = LlamaRunner::ensureServer,
        .convert = AudioRecorder::convertToWhisperWAV,
        .transcribe = Transcriber::transcribe,
        .clean = Cleaner::clean,
        .typeText = Injector::typeText,
        .paste = Injector::paste,
        .stopEngines = endEngines,
        .showOnboarding =
            [owned](const FirstRun& firstRun) {
                owned->onboarding.onFinished = firstRun.onFinished;
                owned->onboarding.onPutOff = firstRun.onPutOff;
                owned->onboarding.show();
            },
        .resumeOnboarding = [owned] { return owned->onboarding.resume(); },
        .startUpdater =
            [owned](const std::function<void()>& onStateChange) {
                owned->updater.onStateChange = onStateChange;
                owned->updater.onInstallation = onStateChange;
                owned->updater.start();
            },
        .availableVersion =
            [owned] {
                const auto& available = owned->updater.available;
                return available ? std::optional(available->version) : std::nullopt;
            },
        .installingVersion = [owned] { return owned->updater.installing(); },
        .promptAndInstall = [owned] { owned->updater.promptAndInstall(); },
        .showWhatsNew = WhatsNew::showIfPending,
        .showSettings = [owned] { owned->settings.show(); },
        .showRecognisers = [owned] { owned->settings.show(SettingsPage::Dictation); },
        .showHotKeyChoice = [owned] { owned->settings.show(SettingsPage::Dictation); },
        .showFeedback = [owned] { owned->feedback.show(); },
        .maybePromptForFeedback = [owned] { owned->feedback.maybePromptAfterDictation(); },
    };
}

}  // namespace parlivo
