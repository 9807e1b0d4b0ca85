// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace parlivo {

/// The pages that others lead to.
enum class SettingsPage { General, Dictation };

/// The one settings window. Main thread.
class SettingsWindowController {
  public:
    explicit SettingsWindowController(SettingsActions actions);
    ~SettingsWindowController();
    SettingsWindowController(const SettingsWindowController&) = delete;
    SettingsWindowController& operator=(const SettingsWindowController&) = delete;

    /// Builds the window on the first call, then brings it to the front, on a page if one is named.
    void show(std::optional<SettingsPage> page = {});

  private:
    const SettingsActions actions_;
    std::unique_ptr<QWidget> window_;
};

}  // namespace parlivo
