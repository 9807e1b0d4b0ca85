// SPDX-License-Identifier: MIT
#pragma once

#include "input/HotKeyPresets.h"
#include "platform/HotKeyService.h"

#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace parlivo {

/// The one system-wide hot key. It reports that the key went down or came up; the callbacks decide what this
/// means. Main thread.
class HotKeyManager {
  public:
    HotKeyManager();
    ~HotKeyManager();
    HotKeyManager(const HotKeyManager&) = delete;
    HotKeyManager& operator=(const HotKeyManager&) = delete;

    /// All choices, in the order in which they are offered; the first is also the fallback.
    static const std::vector<Preset>& presets();
    /// The choice with this id, or the first one if there is none.
    static const Preset& preset(const QString& id);

    /// Registers the hot key that the settings name, in place of the present one. If the system refuses it,
    /// this is logged and there is no hot key. Where other programs commonly hold combinations, the first
    /// free preset is then taken and stored for a user who never chose one; otherwise the refused one is
    /// tried again whenever it may have become free. Where the system has no hot keys, none is tried.
    void applyCurrentPreset();

    /// Why the hot key does not work, or not under all lock keys: the system refused it, at its registration
    /// or when the keyboard changed later. nullopt while it works, and before the first registration.
    const std::optional<HotKeyRefusal>& refusal() const { return refusal_; }
    /// Called with the new `refusal()` after each registration and whenever it changes later.
    std::function<void(const std::optional<HotKeyRefusal>& refusal)> onOutcome;

    /// How long to wait for the next try when there have been so many by the clock alone.
    static std::chrono::seconds retryInterval(int retries);

    std::function<void()> onKeyDown;
    std::function<void()> onKeyUp;

  private:
    void installHandler();
    /// nullopt if it is registered.
    std::optional<HotKeyRefusal> registerHotKey(KeyCode keyCode, HotKeyModifiers modifiers);
    std::optional<HotKeyRefusal> registerAny();
    void report(const std::optional<HotKeyRefusal>& outcome);
    void retryWhileRefused();
    void retry();
    /// Those of which any would do.
    static std::vector<HotKeyCombination> candidates();
    void retryByTheClock();
    /// At once: the user is looking at what is said of the refused combination.
    void retryNow();
    void waitForRetry();

    std::optional<HotKeyRefusal> refusal_;
    std::unique_ptr<HotKeyRegistration> hotKeyRef_;
    std::unique_ptr<HotKeyHandler> handlerRef_;
    QTimer retryTimer_;
    int retries_ = 0;        ///< by the clock alone, since the key was refused
    bool watching_ = false;  ///< whether the service tells what may have become free
};

}  // namespace parlivo
