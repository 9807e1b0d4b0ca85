#pragma once

#include "support/Lifetime.h"
#include "support/SerialQueue.h"
#include "ui/settings/SettingsWindowController.h"
#include "ui/views/Form.h"

namespace parlivo {

/// Sounds, typing, log, and where the models are kept.
class GeneralTab : public FormPage {
  public:
    explicit GeneralTab(const SettingsActions& actions, QWidget* parent = nullptr);

  private:
    void setLaunchAtLogin(bool wanted);
    void addModelsFolder(Form& form);
    void pickModelsFolder();
    void adoptModelsFolder(const QString& folder);
    void showModelsPath(const QString& path);

    const SettingsActions actions_;
    bool launchAtLogin_;
    Label* modelsPath_ = nullptr;
    QPushButton* changeButton_ = nullptr;
    Lifetime lifetime_;
    /// Last: a move that still runs is waited for before anything else goes.
    SerialQueue moves_{QStringLiteral("parlivo.models")};
};

}  // namespace parlivo
