// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

namespace parlivo {

class MicrophonePicker;

/// The hot key, the language, the microphone and the recognition model.
class DictationTab : public FormPage {
    Q_OBJECT

  public:
    explicit DictationTab(const SettingsActions& actions, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    MicrophonePicker* microphone_ = nullptr;  ///< null where the system offers no choice
};

}  // namespace parlivo
