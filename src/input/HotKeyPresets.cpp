// SPDX-License-Identifier: MIT
#include "input/HotKeyPresets.h"

#include <QCoreApplication>

#include <algorithm>

namespace parlivo {

const std::vector<Preset>& hotKeyPresets() {
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

const Preset& hotKeyPreset(const QString& id) {
    const auto found = std::ranges::find(hotKeyPresets(), id, &Preset::id);
    return found == hotKeyPresets().end() ? hotKeyPresets().front() : *found;
}

}  // namespace parlivo
