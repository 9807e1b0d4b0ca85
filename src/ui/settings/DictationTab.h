// SPDX-License-Identifier: MIT
#pragma once

#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

namespace parlivo {

/// The hot key, the language and the recognition model.
class DictationTab : public FormPage {
    Q_OBJECT

  public:
    explicit DictationTab(const SettingsActions& actions, QWidget* parent = nullptr);
};

}  // namespace parlivo
