// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"
#include "support/Worker.h"
#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

#include <QStringList>

#include <memory>

namespace parlivo {

/// How the transcript is cleaned up, and by what.
class CleanupTab : public FormPage {
    Q_OBJECT

  public:
    explicit CleanupTab(const SettingsActions& actions, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void showModels(const QStringList& availableModels);
    void addCustomPrompt(Form& form, const SettingsActions& actions);

    Picker* model_ = nullptr;
    std::unique_ptr<Worker> namesRequest_;
    Lifetime lifetime_;
};

}  // namespace parlivo
