// SPDX-License-Identifier: MIT
#pragma once

#include "input/Injector.h"

#include <QString>

#include <functional>
#include <optional>

namespace parlivo {

/// What AppDelegate asks of the engines, the keyboard and the windows. `real()` returns the program's own; a
/// test passes functions of its own.
struct Collaborators {
    // On the pipeline queue; blocking.
    std::function<void()> ensureTranscriber;
    std::function<void()> ensureCleaner;
    std::function<QString(const QString& recording)> convert;  ///< throws Error
    std::function<QString(const QString& wav)> transcribe;     ///< throws Error
    std::function<QString(const QString& raw)> clean;
    std::function<Injector::Outcome(const QString& text)> typeText;
    std::function<Injector::Outcome(const QString& text)> paste;

    // On the main thread.
    std::function<void()> stopEngines;
    struct FirstRun {
        std::function<void()> onFinished;
        std::function<void()> onPutOff;  ///< the user goes on another time
    };
    std::function<void(FirstRun)> showOnboarding;
    /// Goes on with a first run that was put off; false if there is none.
    std::function<bool()> resumeOnboarding;
    std::function<void(std::function<void()> onStateChange)> startUpdater;
    std::function<std::optional<QString>()> availableVersion;
    std::function<std::optional<QString>()> installingVersion;
    std::function<void()> promptAndInstall;
    std::function<void()> showWhatsNew;
    std::function<void()> showSettings;
    std::function<void()> showRecognisers;   ///< the settings, where models are downloaded
    std::function<void()> showHotKeyChoice;  ///< the settings, where the hot key is chosen
    std::function<void()> showFeedback;
    std::function<void()> maybePromptForFeedback;

    static Collaborators real();
};

}  // namespace parlivo
