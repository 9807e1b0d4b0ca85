#include "ui/settings/GeneralTab.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"
#include "ui/views/Dialogs.h"
#include "ui/views/Windows.h"

#include <QDir>
#include <QPointer>

namespace parlivo {

using namespace Qt::StringLiterals;

GeneralTab::GeneralTab(const SettingsActions& actions, QWidget* parent)
    : FormPage(parent), actions_(actions), launchAtLogin_(Platform::current().loginItem().isEnabled()) {
    Form form(contents());
    form.toggle(u"Avvia Parlivo al login"_s, {.get = [this] { return launchAtLogin_; },
                                              .set = [this](bool wanted) { setLaunchAtLogin(wanted); }});
    form.toggle(u"Suoni di inizio/fine registrazione"_s, bindingTo(Settings::soundsEnabled));
    form.toggle(u"Mostra il riquadro con la waveform"_s, bindingTo(Settings::overlayEnabled));
    form.radioGroup(u"Velocità di scrittura"_s,
                    {{u"Istantanea (incolla tutto insieme)"_s, wordOf(TypingSpeed::Instant)},
                     {u"Veloce (~285 caratteri/s)"_s, wordOf(TypingSpeed::Fast)},
                     {u"Naturale (~85 caratteri/s)"_s, wordOf(TypingSpeed::Natural)}},
                    bindingTo(Settings::typingSpeed));
    form.caption(
        u"Con Istantanea il testo appare di colpo via clipboard; le altre modalità digitano lettera per lettera."_s);
    form.divider();
    form.toggle(u"Modalità debug (salva le trascrizioni nel log)"_s, bindingTo(Settings::debugMode));
    form.caption(
        u"Di norma il log non contiene mai i tuoi testi. Attivala solo per diagnosticare problemi."_s);
    form.divider();
    addModelsFolder(form);
    form.button(u"Invia feedback…"_s, actions_.showFeedback);
}

void GeneralTab::setLaunchAtLogin(bool wanted) {
    LoginItem& loginItem = Platform::current().loginItem();
    launchAtLogin_ = wanted;
    try {
        loginItem.setEnabled(wanted);
    } catch (const Error& error) {
        Log::info(u"launch-at-login errore: "_s + error.localizedDescription());
        launchAtLogin_ = loginItem.isEnabled();
    }
}

void GeneralTab::addModelsFolder(Form& form) {
    form.text(u"Cartella modelli AI"_s);
    modelsPath_ = new Label({}, TextStyle::Caption, secondaryColour);
    changeButton_ = makeButton(
        u"Cambia…"_s, [this] { pickModelsFolder(); }, nullptr);
    form.row({modelsPath_, changeButton_});
    showModelsPath(Config::modelsDir());
}

void GeneralTab::pickModelsFolder() {
    const auto folder = Dialogs::current().chooseFolder(Config::modelsDir(), u"Usa questa cartella"_s);
    if (!folder) return;
    QDir().mkpath(*folder);
    changeButton_->setEnabled(false);
    actions_.moveModels(*folder, [tab = QPointer(this)] {
        if (tab) tab->modelsFolderAdopted();
    });
}

void GeneralTab::modelsFolderAdopted() {
    showModelsPath(Config::modelsDir());
    changeButton_->setEnabled(true);
    actions_.stopTranscriber();
    actions_.stopCleaner();
}

void GeneralTab::showModelsPath(const QString& path) {
    modelsPath_->setText(path);
    setPlainToolTip(*modelsPath_, path);
}

}  // namespace parlivo
