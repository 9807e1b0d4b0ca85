// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"

#include <QWidget>

#include <memory>

namespace parlivo {

/// The one settings window. Main thread.
class SettingsWindowController {
  public:
    explicit SettingsWindowController(SettingsActions actions);
    ~SettingsWindowController();
    SettingsWindowController(const SettingsWindowController&) = delete;
    SettingsWindowController& operator=(const SettingsWindowController&) = delete;

    /// Builds the window on the first call, then brings it to the front.
    void show();

  private:
    const SettingsActions actions_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
