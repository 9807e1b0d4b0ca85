// SPDX-License-Identifier: MIT
#include "input/HotKeyManager.h"

#include "input/HotKeyChoice.h"
#include "input/HotKeyStatus.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/Clock.h"

#include <chrono>
#include <utility>

namespace parlivo {

using namespace std::chrono_literals;

namespace {

/// There is only one hot key at a time, so one identity does for all presets. The signature is "PRLV".
constexpr HotKeyIdentity identity{.signature = 0x50524C56, .id = 1};

bool keysAreContended() {
    return Platform::current().hotKeys().contention() == HotKeyService::Contention::Common;
}

bool canBeHad(const std::optional<HotKeyRefusal>& refusal) {
    return !refusal || refusal->reason == HotKeyRefusal::Reason::NotSetUp;
}

bool userHasChosen() {
    return Config::string(Settings::hotkeyPreset.key).has_value();
}

}  // namespace

const std::vector<Preset>& HotKeyManager::presets() {
    return hotKeyPresets();
}

const Preset& HotKeyManager::preset(const QString& id) {
    return hotKeyPreset(id);
}

HotKeyManager::HotKeyManager() {
    retryTimer_.setSingleShot(true);
    QObject::connect(&retryTimer_, &QTimer::timeout, &retryTimer_, [this] { retryByTheClock(); });
    QObject::connect(&HotKeyStatus::shared(), &HotKeyStatus::lookedAt, &retryTimer_, [this] { retryNow(); });
}

HotKeyManager::~HotKeyManager() {
    // Unregistering a key that is held down ends the hold, which must not be reported any more.
    onKeyDown = nullptr;
    onKeyUp = nullptr;
    onOutcome = nullptr;
    if (watching_) Platform::current().hotKeys().watchRefused({});
    hotKeyRef_.reset();
    handlerRef_.reset();
    HotKeyStatus::shared().set(std::nullopt);
}

void HotKeyManager::applyCurrentPreset() {
    if (Platform::current().hotKeys().edges() == HotKeyService::Edges::None) {
        Log::info(QStringLiteral("questa sessione non ha tasti globali"));
        return report(std::nullopt);
    }
    hotKeyRef_.reset();
    installHandler();
    report(registerAny());
}

/// What the settings choose; for a user who chose nothing, the first that can be had.
std::optional<HotKeyRefusal> HotKeyManager::registerAny() {
    const Preset chosen = HotKeyChoice::current();
    const auto refusal = registerHotKey(chosen.keyCode, chosen.modifiers);
    if (canBeHad(refusal) || userHasChosen() || !keysAreContended()) return refusal;
    for (const Preset& other : presets()) {
        if (other.id == chosen.id) continue;
        const auto othersRefusal = registerHotKey(other.keyCode, other.modifiers);
        if (!canBeHad(othersRefusal)) continue;
        Config::set(Settings::hotkeyPreset, other.id);
        Log::info(QStringLiteral("scorciatoia %1 occupata, scelta %2").arg(chosen.id, other.id));
        return othersRefusal;
    }
    return refusal;
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

std::optional<HotKeyRefusal> HotKeyManager::registerHotKey(KeyCode keyCode, HotKeyModifiers modifiers) {
    auto result = Platform::current().hotKeys().registerHotKey(keyCode, modifiers, identity);
    if (const auto* const refusal = std::get_if<HotKeyRefusal>(&result)) return *refusal;
    hotKeyRef_ = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    return std::nullopt;
}

void HotKeyManager::report(const std::optional<HotKeyRefusal>& outcome) {
    refusal_ = outcome;
    if (outcome && canBeHad(outcome)) {
        Log::info(QStringLiteral("la scorciatoia va ancora assegnata, nelle impostazioni"));
    } else if (outcome) {
        Log::info(QStringLiteral("registrazione hotkey fallita (status %1) — probabilmente già in uso da "
                                 "un'altra app")
                      .arg(outcome->status));
    }
    retryWhileRefused();
    HotKeyStatus::shared().set(refusal_);
    if (onOutcome) onOutcome(refusal_);
}

void HotKeyManager::retryWhileRefused() {
    const bool wanted = !canBeHad(refusal_) && !hotKeyRef_ && keysAreContended();
    if (wanted == watching_) return;
    watching_ = wanted;
    auto& service = Platform::current().hotKeys();
    if (wanted) {
        service.watchRefused([this] { retry(); });
        retries_ = 0;
        waitForRetry();
    } else {
        service.watchRefused({});
        retryTimer_.stop();
    }
}

/// For what no event tells: a program that ends, or that gives a key up.
std::chrono::seconds HotKeyManager::retryInterval(int retries) {
    constexpr int often = 30;
    return retries < often ? 10s : 60s;
}

void HotKeyManager::waitForRetry() {
    retryTimer_.start(Clock::scaled(retryInterval(retries_)));
}

void HotKeyManager::retryByTheClock() {
    ++retries_;
    if (Platform::current().hotKeys().anyMayBeFree(candidates())) retry();
    if (watching_) waitForRetry();
}

void HotKeyManager::retryNow() {
    if (!watching_) return;
    retries_ = 0;
    retry();
    if (watching_) waitForRetry();
}

std::vector<HotKeyCombination> HotKeyManager::candidates() {
    const Preset chosen = HotKeyChoice::current();
    std::vector<HotKeyCombination> all{{chosen.keyCode, chosen.modifiers}};
    if (userHasChosen()) return all;
    for (const Preset& other : presets())
        if (other.id != chosen.id) all.push_back({other.keyCode, other.modifiers});
    return all;
}

void HotKeyManager::retry() {
    if (!watching_ || registerAny()) return;
    Log::info(QStringLiteral("scorciatoia di nuovo libera"));
    report(std::nullopt);
}

}  // namespace parlivo
