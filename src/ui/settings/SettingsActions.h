// SPDX-License-Identifier: MIT
#pragma once

#include "ui/ModelFetch.h"

#include <QString>

#include <functional>

namespace parlivo {

/// What the settings window sets in motion beyond storing a value. All on the main thread.
struct SettingsActions {
    /// Ends the recognition server, so that its next use starts it anew.
    std::function<void()> stopTranscriber;
    /// The same for the cleanup server.
    std::function<void()> stopCleaner;
    /// Makes sure that the user's prompt file exists.
    std::function<void()> preparePrompt;
    std::function<void()> showFeedback;
    std::function<void()> quit;
    /// Moves the models into the folder `to`, makes it the one in force and calls `onAdopted`. Returns at
    /// once.
    std::function<void(const QString& to, std::function<void()> onAdopted)> moveModels;
    ModelFetch fetchModel = fetchFromHost;
};

}  // namespace parlivo
