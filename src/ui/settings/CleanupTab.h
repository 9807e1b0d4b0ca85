#pragma once

#include "support/Lifetime.h"
#include "ui/settings/SettingsActions.h"
#include "ui/views/Form.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace parlivo {

/// How the transcript is cleaned up, and by what.
class CleanupTab : public FormPage {
    Q_OBJECT

  public:
    explicit CleanupTab(const SettingsActions& actions, QWidget* parent = nullptr);

    /// The names in an answer of Ollama's /api/tags, in ascending order; nullopt if it is no such answer.
    static std::optional<QStringList> modelNames(const QByteArray& body);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void fetchModels();
    void showModels(const QStringList& availableModels);
    void addCustomPrompt(Form& form, const SettingsActions& actions);

    Picker* model_ = nullptr;
    Lifetime lifetime_;
};

}  // namespace parlivo
