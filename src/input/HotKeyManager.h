#pragma once

#include "platform/HotKeyService.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace parlivo {

/// One choice of hot key.
struct Preset {
    QString id;     ///< what `hotkeyPreset` stores
    QString label;  ///< what the settings window shows
    KeyCode keyCode = 0;
    HotKeyModifiers modifiers = 0;
};

/// The one system-wide hot key. It tells that the key went down or came up; what this means is decided by
/// whoever installs the callbacks. Main thread.
class HotKeyManager {
  public:
    HotKeyManager() = default;
    ~HotKeyManager();
    HotKeyManager(const HotKeyManager&) = delete;
    HotKeyManager& operator=(const HotKeyManager&) = delete;

    /// All choices, in the order in which they are offered; the first is also the fallback.
    static const std::vector<Preset>& presets();
    /// The choice of this id, or the first one when there is none.
    static const Preset& preset(const QString& id);

    /// Takes the hot key that the settings name, in place of the present one. When the system refuses it, the
    /// log says so and there is no hot key.
    void applyCurrentPreset();

    std::function<void()> onKeyDown;
    std::function<void()> onKeyUp;

  private:
    void installHandler();
    void registerHotKey(KeyCode keyCode, HotKeyModifiers modifiers);

    std::unique_ptr<HotKeyRegistration> hotKeyRef_;
    std::unique_ptr<HotKeyHandler> handlerRef_;
};

}  // namespace parlivo
