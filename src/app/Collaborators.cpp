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

/// The windows, which stay once they have been shown, and the updater. Whatever uses them holds them.
struct Holdings {
    ModelsMover modelsMover;
    OnboardingWindowController onboarding;
    FeedbackWindowController feedback;
    SettingsWindowController settings{{
        .stopTranscriber = Transcriber::stopServer,
        .stopCleaner = LlamaRunner::shutdown,
        .preparePrompt = [] { Config::loadPrompt(); },
        .showFeedback = [this] { feedback.show(); },
        .moveModels = [this](const QString& to,
                             std::function<void()> onAdopted) { modelsMover.move(to, std::move(onAdopted)); },
    }};
    Updater updater{{.stopEngines = endEngines, .quit = [] { QCoreApplication::quit(); }}};
};

}  // namespace

Collaborators Collaborators::real() {
    const auto held = std::make_shared<Holdings>();
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
            [held](const std::function<void()>& onFinished) {
                held->onboarding.onFinished = onFinished;
                held->onboarding.show();
            },
        .startUpdater =
            [held](const std::function<void()>& onStateChange) {
                held->updater.onStateChange = onStateChange;
                held->updater.start();
            },
        .availableVersion =
            [held] {
                const auto& available = held->updater.available;
                return available ? std::optional(available->version) : std::nullopt;
            },
        .promptAndInstall = [held] { held->updater.promptAndInstall(); },
        .showWhatsNew = WhatsNew::showIfPending,
        .showSettings = [held] { held->settings.show(); },
        .showFeedback = [held] { held->feedback.show(); },
        .maybePromptForFeedback = [held] { held->feedback.maybePromptAfterDictation(); },
    };
}

}  // namespace parlivo
