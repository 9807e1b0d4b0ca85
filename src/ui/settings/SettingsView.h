// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"

#include <QTabWidget>

namespace parlivo {

/// The tabs of the settings.
class SettingsView : public QTabWidget {
    Q_OBJECT

  public:
    explicit SettingsView(const SettingsActions& actions, QWidget* parent = nullptr);

    /// What the widest page and the row of tabs need.
    int leastWidth() const;

  protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void drawIcons();
};

}  // namespace parlivo
