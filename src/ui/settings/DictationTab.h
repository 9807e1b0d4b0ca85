// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

namespace parlivo {

class MicrophonePicker;
class OwnHotKey;
class RadioGroup;

/// The hot key, the language, the microphone and the recognition model.
class DictationTab : public FormPage {
    Q_OBJECT

  public:
    explicit DictationTab(const SettingsActions& actions, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void addKey(Form& form);
    void addHotKeys(Form& form);
    void showMode();

    MicrophonePicker* microphone_ = nullptr;  ///< null where the system offers no choice
    RadioGroup* mode_ = nullptr;
    Label* pressesOnly_ = nullptr;    ///< in its place
    OwnHotKey* ownHotKey_ = nullptr;  ///< where the system lets the user choose any combination
};

}  // namespace parlivo
