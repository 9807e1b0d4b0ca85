// SPDX-License-Identifier: MIT
#include "input/HotKeyManager.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace parlivo {

namespace {

/// There is only one hot key at a time, so one identity does for all presets. The signature is "PRLV".
constexpr HotKeyIdentity identity{.signature = 0x50524C56, .id = 1};

}  // namespace

const std::vector<Preset>& HotKeyManager::presets() {
    using namespace HotKeyModifier;
    static const std::vector<Preset> table{
        {QStringLiteral("opt-space"), QCoreApplication::translate("parlivo::HotKeyManager", "⌥ Spazio"),
         VirtualKey::space, option},
        {QStringLiteral("ctrl-opt-space"), QCoreApplication::translate("parlivo::HotKeyManager", "⌃⌥ Spazio"),
         VirtualKey::space, control | option},
        {QStringLiteral("cmd-shift-space"),
         QCoreApplication::translate("parlivo::HotKeyManager", "⌘⇧ Spazio"), VirtualKey::space,
         command | shift},
        {QStringLiteral("opt-backtick"),
         QCoreApplication::translate("parlivo::HotKeyManager", "⌥ ` (backtick)"), VirtualKey::grave, option},
    };
    return table;
}

const Preset& HotKeyManager::preset(const QString& id) {
    const auto found = std::ranges::find(presets(), id, &Preset::id);
    return found == presets().end() ? presets().front() : *found;
}

HotKeyManager::~HotKeyManager() {
    // Unregistering a key that is held down ends the hold, which must not be reported any more.
    onKeyDown = nullptr;
    onKeyUp = nullptr;
    onOutcome = nullptr;
    hotKeyRef_.reset();
    handlerRef_.reset();
}

void HotKeyManager::applyCurrentPreset() {
    const QString id = Config::get(Settings::hotkeyPreset);
    const Preset& chosen = preset(id);
    hotKeyRef_.reset();
    registerHotKey(chosen.keyCode, chosen.modifiers);
}

void HotKeyManager::installHandler() {
    if (handlerRef_) return;
    handlerRef_ = Platform::current().hotKeys().installHandler(
        [this] {
            if (onKeyDown) onKeyDown();
        },
        [this] {
            if (onKeyUp) onKeyUp();
        },
        [this](std::optional<HotKeyRefusal> outcome) { report(outcome); });
}

void HotKeyManager::registerHotKey(KeyCode keyCode, HotKeyModifiers modifiers) {
    installHandler();
    auto result = Platform::current().hotKeys().registerHotKey(keyCode, modifiers, identity);
    if (const auto* const refusal = std::get_if<HotKeyRefusal>(&result)) return report(*refusal);
    hotKeyRef_ = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    report(std::nullopt);
}

void HotKeyManager::report(std::optional<HotKeyRefusal> outcome) {
    refusal_ = outcome;
    if (outcome) {
        Log::info(QStringLiteral("registrazione hotkey fallita (status %1) — probabilmente già in uso da "
                                 "un'altra app")
                      .arg(outcome->status));
    }
    if (onOutcome) onOutcome(refusal_);
}

}  // namespace parlivo
