// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

namespace parlivo {

class MicrophonePicker;
class OwnHotKey;

/// The hot key, the language, the microphone and the recognition model.
class DictationTab : public FormPage {
    Q_OBJECT

  public:
    explicit DictationTab(const SettingsActions& actions, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void addHotKeys(Form& form);

    MicrophonePicker* microphone_ = nullptr;  ///< null where the system offers no choice
    OwnHotKey* ownHotKey_ = nullptr;          ///< where the system lets the user choose any combination
};

}  // namespace parlivo
