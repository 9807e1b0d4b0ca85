// SPDX-License-Identifier: MIT
#include "ui/settings/DictationTab.h"

#include "input/HotKeyChoice.h"
#include "input/HotKeyManager.h"
#include "input/HotKeyTitle.h"
#include "models/ModelCatalog.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/SettingsNotifier.h"
#include "ui/SessionHints.h"
#include "ui/TierPicker.h"
#include "ui/settings/MicrophonePicker.h"
#include "ui/settings/OwnHotKey.h"

#include <QShowEvent>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

std::vector<Option> hotKeyOptions() {
    std::vector<Option> options;
    for (const Preset& preset : HotKeyManager::presets()) options.push_back({hotKeyTitle(preset), preset.id});
    return options;
}

HotKeyService::Edges hotKeyEdges() {
    return Platform::current().hotKeys().edges();
}

bool anyCombinationGoes() {
    return Platform::current().hotKeys().contention() == HotKeyService::Contention::Common;
}

Binding<QString> hotKeyPreset() {
    Binding<QString> preset = bindingTo(Settings::hotkeyPreset);
    return {.get = preset.get, .set = [store = preset.set, current = preset.get](const QString& chosen) {
                const bool changed = chosen != current();
                store(chosen);
                if (changed) Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
            }};
}

}  // namespace

DictationTab::DictationTab(const SettingsActions& actions, QWidget* parent) : FormPage(parent) {
    Form form(contents());
    addKey(form);
    form.divider();
    form.heading(tr("Voce"));
    form.picker(
        tr("Lingua"),
        {{tr("Italiano"), u"it"_s}, {tr("English"), u"en"_s}, {tr("Rilevamento automatico"), u"auto"_s}},
        bindingTo(Settings::language));
    form.caption(tr("La lingua fissa è più accurata del rilevamento automatico sulle frasi brevi."));
    if (Platform::current().audioInput().offersChoice()) microphone_ = new MicrophonePicker(form, this);
    form.divider();
    const auto asrTier = bindingTo(Settings::asrTier);
    form.add(new TierPicker(
        tr("Qualità trascrizione"), ModelCatalog::asrTiers(), asrTier,
        [asrTier, stop = actions.stopTranscriber] {
            asrTier.set(asrTier.get());
            stop();
        },
        actions.fetchModel));
}

void DictationTab::addKey(Form& form) {
    form.heading(tr("Tasto"));
    if (hotKeyEdges() == HotKeyService::Edges::None) {
        // The desktop's own settings are the place to choose one.
    } else if (anyCombinationGoes()) {
        addHotKeys(form);
    } else {
        form.picker(tr("Scorciatoia"), hotKeyOptions(), hotKeyPreset());
    }
    form.add(new SessionHints(SessionHint::Topic::HotKey, {.margins = Form::headingMargins()}, contents()));
    mode_ = &form.unlabelledRadioGroup(
        tr("Modalità di dettatura"),
        {{tr("Tieni premuto per parlare (push-to-talk)"), wordOf(DictationMode::PushToTalk)},
         {tr("Premi per iniziare, ripremi per fermare"), wordOf(DictationMode::Toggle)}},
        bindingTo(Settings::dictationMode));
    pressesOnly_ = &form.caption(tr(
        "In questa sessione si sa solo quando il tasto viene premuto: premi per iniziare, ripremi per fermare."));
    showMode();
}

/// Push-to-talk is not offered where no release is told.
void DictationTab::showMode() {
    const bool toldOfReleases = hotKeyEdges() == HotKeyService::Edges::Both;
    mode_->setVisible(toldOfReleases);
    pressesOnly_->setVisible(!toldOfReleases);
}

void DictationTab::showEvent(QShowEvent* event) {
    showMode();
    FormPage::showEvent(event);
    if (microphone_) microphone_->refresh();
}

/// The presets, and a combination of the user's own, which counts once it has been pressed.
void DictationTab::addHotKeys(Form& form) {
    auto options = hotKeyOptions();
    options.push_back({tr("Altra…"), HotKeyChoice::ownId()});
    const auto preset = hotKeyPreset();
    const auto chosen = [this, store = preset.set](const QString& id) {
        const bool isOwn = id == HotKeyChoice::ownId();
        if (!isOwn || HotKeyChoice::hasOwn()) store(id);
        if (isOwn) {
            ownHotKey_->offer();
        } else {
            ownHotKey_->refresh();
        }
    };
    Picker& picker = form.picker(tr("Scorciatoia"), options, {.get = preset.get, .set = chosen});
    ownHotKey_ = &form.add(new OwnHotKey([&picker] {
        Q_EMIT SettingsNotifier::shared().pvHotkeyChanged();
        picker.refresh();
    }));
}

}  // namespace parlivo
