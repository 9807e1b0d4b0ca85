#include "app/Collaborators.h"

#include "audio/AudioRecorder.h"
#include "engines/Cleaner.h"
#include "engines/CleanupPrompt.h"
#include "engines/LlamaRunner.h"
#include "engines/Transcriber.h"
#include "input/Injector.h"
#include "ui/OnboardingWindowController.h"
#include "ui/SettingsWindowController.h"
#include "update/FeedbackWindowController.h"

#include <memory>

namespace parlivo {

namespace {

/// The windows, which stay once they have been shown. Whatever opens them holds them.
struct Windows {
    OnboardingWindowController onboarding;
    FeedbackWindowController feedback;
    SettingsWindowController settings{{
        .stopTranscriber = Transcriber::stopServer,
        .stopCleaner = LlamaRunner::shutdown,
        .preparePrompt = [] { Config::loadPrompt(); },
        .showFeedback = [this] { feedback.show(); },
    }};
};

}  // namespace

Collaborators Collaborators::real() {
    const auto windows = std::make_shared<Windows>();
    return {
        .ensureTranscriber = Transcriber::ensureServer,
        .ensureCleaner = LlamaRunner::ensureServer,
        .convert = AudioRecorder::convertToWhisperWAV,
        .transcribe = Transcriber::transcribe,
        .clean = Cleaner::clean,
        .typeText = Injector::typeText,
        .paste = Injector::paste,
        .stopEngines =
            [] {
                Transcriber::stopServer();
                LlamaRunner::shutdown();
            },
        .showOnboarding =
            [windows](const std::function<void()>& onFinished) {
                windows->onboarding.onFinished = onFinished;
                windows->onboarding.show();
            },
        // The updater joins in here when it comes.
        .startUpdater = [](const std::function<void()>&) {},
        .availableVersion = [] { return std::optional<QString>(); },
        .promptAndInstall = [] {},
        .showWhatsNew = [] {},
        .showSettings = [windows] { windows->settings.show(); },
        .showFeedback = [windows] { windows->feedback.show(); },
        .maybePromptForFeedback = [windows] { windows->feedback.maybePromptAfterDictation(); },
    };
}

}  // namespace parlivo
