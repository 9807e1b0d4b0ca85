// SPDX-License-Identifier: MIT
#include "ui/settings/GeneralTab.h"

#include "input/HotKeyStatus.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Error.h"
#include "ui/SessionHints.h"
#include "ui/views/Dialogs.h"
#include "ui/views/Windows.h"

#include <QDir>
#include <QPointer>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

void openManual() {
    const auto manual = Platform::current().bundle().resource(u"help/manuale.html"_s);
    if (manual) Platform::current().workspace().open(QUrl::fromLocalFile(*manual));
}

}  // namespace

GeneralTab::GeneralTab(const SettingsActions& actions, QWidget* parent)
    : FormPage(parent), actions_(actions), launchAtLogin_(Platform::current().loginItem().isEnabled()) {
    Form form(contents());
    form.heading(tr("Comportamento"));
    form.toggle(tr("Avvia Parlivo al login"), {.get = [this] { return launchAtLogin_; },
                                               .set = [this](bool wanted) { setLaunchAtLogin(wanted); }});
    form.toggle(tr("Suoni di inizio/fine registrazione"), bindingTo(Settings::soundsEnabled));
    form.toggle(tr("Mostra il riquadro con la waveform"), bindingTo(Settings::overlayEnabled));
    form.toggle(tr("Notifiche degli errori"), bindingTo(Settings::notificationsEnabled));
    form.divider();
    addPace(form);
    form.divider();
    form.heading(tr("Diagnosi"));
    form.toggle(tr("Modalità debug (salva le trascrizioni nel log)"), bindingTo(Settings::debugMode));
    form.caption(
        tr("Di norma il log non contiene mai i tuoi testi. Attivala solo per diagnosticare problemi."),
        Form::Under::Words);
    form.divider();
    addModelsFolder(form);
    form.divider();
    addProgram(form);
    addSession(form);
}

/// What was granted or chosen meanwhile changes the ways that the session has.
void GeneralTab::addSession(Form& form) {
    auto* const hints =
        new SessionHints(SessionHint::Topic::Text, {.margins = Form::headingMargins()}, contents());
    connect(hints, &SessionHints::changed, this, [this] { showPace(); });
    if (const auto note = Platform::current().sessionNote()) {
        Label& label = form.caption(*note);
        const auto renew = [&label] { label.setText(Platform::current().sessionNote().value_or(QString())); };
        connect(hints, &SessionHints::changed, &label, renew);
        connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, &label, renew);
    }
    form.add(hints);
}

void GeneralTab::addPace(Form& form) {
    pace_ = &form.radioGroup(tr("Velocità di scrittura"),
                             {{tr("Istantanea (incolla tutto insieme)"), wordOf(TypingSpeed::Instant)},
                              {tr("Veloce (~285 caratteri/s)"), wordOf(TypingSpeed::Fast)},
                              {tr("Naturale (~85 caratteri/s)"), wordOf(TypingSpeed::Natural)}},
                             bindingTo(Settings::typingSpeed));
    paceExplained_ = &form.caption(
        tr("Con Istantanea il testo appare di colpo via clipboard; le altre modalità digitano lettera per lettera."),
        Form::Under::Words);
    noPace_ = &form.caption(tr(
        "In questa sessione il testo non si scrive lettera per lettera, ma tutto insieme: la velocità non si sceglie."));
    showPace();
}

/// A choice without an effect is not offered.
void GeneralTab::showPace() {
    const bool types = Platform::current().keyboard().typesText();
    pace_->setVisible(types);
    paceExplained_->setVisible(types);
    noPace_->setVisible(!types);
}

void GeneralTab::showEvent(QShowEvent* event) {
    showPace();
    FormPage::showEvent(event);
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
    form.heading(tr("Cartella modelli AI"));
    modelsPath_ = new Label({}, TextStyle::Caption, secondaryColour);
    changeButton_ = makeButton(
        tr("Cambia…"), [this] { pickModelsFolder(); }, nullptr);
    form.row({modelsPath_, changeButton_});
    showModelsPath(Config::modelsDir());
}

void GeneralTab::addProgram(Form& form) {
    form.heading(tr("Parlivo %1").arg(Config::appVersion()));
    form.buttons({makeButton(tr("Apri il manuale"), openManual, nullptr),
                  makeButton(tr("Invia feedback…"), actions_.showFeedback, nullptr),
                  makeButton(tr("Esci da Parlivo"), actions_.quit, nullptr)});
}

void GeneralTab::pickModelsFolder() {
    const auto folder = Dialogs::current().chooseFolder(Config::modelsDir(), tr("Usa questa cartella"));
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
