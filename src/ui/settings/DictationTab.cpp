#include "ui/settings/DictationTab.h"

#include "input/HotKeyManager.h"
#include "models/ModelCatalog.h"
#include "settings/Config.h"
#include "settings/SettingsNotifier.h"
#include "ui/TierPicker.h"

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

std::vector<Option> hotKeyOptions() {
    std::vector<Option> options;
    for (const Preset& preset : HotKeyManager::presets()) options.push_back({preset.label, preset.id});
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
    form.picker(u"Scorciatoia"_s, hotKeyOptions(), hotKeyPreset());
    form.unlabelledRadioGroup(
        u"Modalità di dettatura"_s,
        {{u"Tieni premuto per parlare (push-to-talk)"_s, wordOf(DictationMode::PushToTalk)},
         {u"Premi per iniziare, ripremi per fermare"_s, wordOf(DictationMode::Toggle)}},
        bindingTo(Settings::dictationMode));
    form.divider();
    form.picker(u"Lingua"_s,
                {{u"Italiano"_s, u"it"_s}, {u"English"_s, u"en"_s}, {u"Rilevamento automatico"_s, u"auto"_s}},
                bindingTo(Settings::language));
    form.caption(u"La lingua fissa è più accurata del rilevamento automatico sulle frasi brevi."_s);
    form.divider();
    const auto asrTier = bindingTo(Settings::asrTier);
    form.add(new TierPicker(
        u"Qualità trascrizione"_s, ModelCatalog::asrTiers(), asrTier,
        [asrTier, stop = actions.stopTranscriber] {
            asrTier.set(asrTier.get());
            stop();
        },
        actions.fetchModel));
}

}  // namespace parlivo
