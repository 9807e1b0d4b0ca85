#pragma once

#include "ui/ModelFetch.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

namespace parlivo {

/// What the settings set in motion beyond storing a value. All on the main thread.
struct SettingsActions {
    /// Ends the recognition server, so that its next use starts it anew.
    std::function<void()> stopTranscriber;
    /// The same for the cleanup server.
    std::function<void()> stopCleaner;
    /// Makes sure that the user's prompt file exists.
    std::function<void()> preparePrompt;
    std::function<void()> showFeedback;
    ModelFetch fetchModel = fetchFromHost;
};

/// The one settings window. Main thread.
class SettingsWindowController {
  public:
    explicit SettingsWindowController(SettingsActions actions);
    ~SettingsWindowController();
    SettingsWindowController(const SettingsWindowController&) = delete;
    SettingsWindowController& operator=(const SettingsWindowController&) = delete;

    /// Builds the window on the first call, then brings it to the front.
    void show();
    QWidget* window() const { return window_.get(); }

  private:
    const SettingsActions actions_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
