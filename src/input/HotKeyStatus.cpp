// SPDX-License-Identifier: MIT
#include "input/HotKeyStatus.h"

#include "input/HotKeyChoice.h"
#include "input/HotKeyTitle.h"
#include "platform/Platform.h"

namespace parlivo {

HotKeyStatus& HotKeyStatus::shared() {
    static HotKeyStatus instance;
    return instance;
}

std::optional<QString> HotKeyStatus::warning() const {
    const bool told = Platform::current().hotKeys().contention() == HotKeyService::Contention::Common;
    if (!refusal_ || !told) return std::nullopt;
    if (refusal_->reason == HotKeyRefusal::Reason::NotSetUp)
        return tr("%1 non è ancora attiva: va assegnata nelle impostazioni").arg(hotKeyTitle());
    if (refusal_->reason == HotKeyRefusal::Reason::Unusable)
        return tr("%1 non si può usare in questa sessione: scegli un'altra scorciatoia").arg(hotKeyTitle());
    return tr("%1 è già usata da un altro programma: scegli un'altra scorciatoia").arg(hotKeyTitle());
}

HotKeyStatus::Verdict HotKeyStatus::verdictOn(KeyCode key, HotKeyModifiers modifiers) const {
    if (!HotKeyChoice::isAllowed(key, modifiers)) return Verdict::Unusable;
    const Preset inForce = HotKeyChoice::current();
    // Ours already, or refused already: a second try would take the first one's place.
    if (inForce.keyCode == key && inForce.modifiers == modifiers)
        return refusal_ && refusal_->reason != HotKeyRefusal::Reason::NotSetUp ? Verdict::Taken
                                                                               : Verdict::Free;
    // The hot key itself has another identity, so that both may exist for a moment.
    constexpr HotKeyIdentity trial{.signature = 0x50524C56, .id = 2};
    const auto result = Platform::current().hotKeys().registerHotKey(key, modifiers, trial);
    const auto* const refusal = std::get_if<HotKeyRefusal>(&result);
    if (!refusal) return Verdict::Free;
    switch (refusal->reason) {
        case HotKeyRefusal::Reason::Taken:
            return Verdict::Taken;
        case HotKeyRefusal::Reason::Unusable:
            return Verdict::Unusable;
        case HotKeyRefusal::Reason::NotSetUp:
            break;
    }
    return Verdict::Free;
}

void HotKeyStatus::set(const std::optional<HotKeyRefusal>& refusal) {
    refusal_ = refusal;
    Q_EMIT changed();
}

}  // namespace parlivo
