// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

namespace parlivo {

/// Sounds, typing, log, where the models are kept, and the program itself.
class GeneralTab : public FormPage {
    Q_OBJECT

  public:
    explicit GeneralTab(const SettingsActions& actions, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void addPace(Form& form);
    void showPace();
    void setLaunchAtLogin(bool wanted);
    void addModelsFolder(Form& form);
    void addProgram(Form& form);
    void addSession(Form& form);
    void pickModelsFolder();
    void modelsFolderAdopted();
    void showModelsPath(const QString& path);

    const SettingsActions actions_;
    bool launchAtLogin_;
    RadioGroup* pace_ = nullptr;
    Label* paceExplained_ = nullptr;
    Label* noPace_ = nullptr;  ///< in their place
    Label* modelsPath_ = nullptr;
    QPushButton* changeButton_ = nullptr;
};

}  // namespace parlivo
