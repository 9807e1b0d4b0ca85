// SPDX-License-Identifier: MIT
#include "ui/settings/DictationTab.h"

#include "input/HotKeyTitle.h"
#include "models/ModelCatalog.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/SettingsNotifier.h"
#include "ui/TierPicker.h"
#include "ui/settings/MicrophonePicker.h"

#include <QShowEvent>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

std::vector<Option> hotKeyOptions() {
    std::vector<Option> options;
    for (const Preset& preset : HotKeyManager::presets()) options.push_back({hotKeyTitle(preset), preset.id});
    return options;
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
    form.heading(tr("Tasto"));
    form.picker(tr("Scorciatoia"), hotKeyOptions(), hotKeyPreset());
    form.unlabelledRadioGroup(
        tr("Modalità di dettatura"),
        {{tr("Tieni premuto per parlare (push-to-talk)"), wordOf(DictationMode::PushToTalk)},
         {tr("Premi per iniziare, ripremi per fermare"), wordOf(DictationMode::Toggle)}},
        bindingTo(Settings::dictationMode));
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

void DictationTab::showEvent(QShowEvent* event) {
    FormPage::showEvent(event);
    if (microphone_) microphone_->refresh();
}

}  // namespace parlivo
