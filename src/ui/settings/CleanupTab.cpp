// SPDX-License-Identifier: MIT
#include "ui/settings/CleanupTab.h"

#include "engines/OllamaModels.h"
#include "models/ModelCatalog.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "ui/TierPicker.h"

#include <QShowEvent>
#include <QTimer>

namespace parlivo {

using namespace Qt::StringLiterals;

CleanupTab::CleanupTab(const SettingsActions& actions, QWidget* parent) : FormPage(parent) {
    Form form(contents());
    const auto cleanupTier = bindingTo(Settings::cleanupTier);
    form.add(new TierPicker(
        tr("Motore di pulizia integrato (senza Ollama)"), ModelCatalog::cleanupTiers(), cleanupTier,
        [cleanupTier, stop = actions.stopCleaner] {
            cleanupTier.set(cleanupTier.get());
            stop();
        },
        actions.fetchModel));
    form.caption(
        tr("Se hai Ollama, viene usato come alternativa quando il motore integrato non è scaricato."));
    form.divider();
    form.radioGroup(tr("Livello di pulizia"),
                    {{tr("Nessuna — testo grezzo di Whisper"), wordOf(CleanupLevel::None)},
                     {tr("Leggera — solo punteggiatura e maiuscole"), wordOf(CleanupLevel::Light)},
                     {tr("Media — anche filler rimossi (consigliata)"), wordOf(CleanupLevel::Medium)},
                     {tr("Alta — anche grammatica e riformulazioni"), wordOf(CleanupLevel::High)}},
                    bindingTo(Settings::cleanupLevel));
    form.divider();
    form.heading(tr("Altre scelte"));
    model_ = &form.picker(tr("Modello Ollama"), {}, bindingTo(Settings::cleanupModel));
    form.stepper(tr("Pulisci solo testi oltre "), tr(" caratteri"), {.from = 0, .to = 300, .by = 10},
                 bindingTo(Settings::cleanupMinChars));
    addCustomPrompt(form, actions);
}

void CleanupTab::addCustomPrompt(Form& form, const SettingsActions& actions) {
    const auto enabled = bindingTo(Settings::customPromptEnabled);
    Toggle& toggle = form.toggle(tr("Usa prompt personalizzato"), enabled);
    auto* explanation =
        new Label(tr("Il file sovrascrive i livelli qui sopra."), TextStyle::Caption, secondaryColour);
    auto* open = makeButton(
        tr("Apri prompt.txt…"),
        [prepare = actions.preparePrompt] {
            prepare();
            Platform::current().workspace().open(QUrl::fromLocalFile(Config::promptFile()));
        },
        nullptr);
    QWidget& row = form.row({explanation, open});
    row.setVisible(enabled.get());
    connect(&toggle, &Toggle::toggled, this, [this, &row](bool on) {
        row.setVisible(on);
        if (on) QTimer::singleShot(0, this, [this, &row] { ensureWidgetVisible(&row); });
    });
}

void CleanupTab::showEvent(QShowEvent* event) {
    FormPage::showEvent(event);
    namesRequest_ = OllamaModels::fetchNames(
        lifetime_.token(), [this](const QStringList& availableModels) { showModels(availableModels); });
}

void CleanupTab::showModels(const QStringList& availableModels) {
    std::vector<Option> options;
    for (const QString& name : availableModels) options.push_back({name, name});
    model_->setOptions(options);
}

}  // namespace parlivo
