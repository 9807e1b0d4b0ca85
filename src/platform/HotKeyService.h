// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace parlivo {

/// A key's position on the keyboard, as a macOS virtual key code.
using KeyCode = std::uint32_t;

/// The positions that presets and injector name.
namespace VirtualKey {
inline constexpr KeyCode v = 9;
inline constexpr KeyCode returnKey = 36;
inline constexpr KeyCode tab = 48;
inline constexpr KeyCode space = 49;
inline constexpr KeyCode grave = 50;  ///< left of "1"
}  // namespace VirtualKey

/// Modifiers of a hot key, as a Carbon mask.
using HotKeyModifiers = std::uint32_t;
namespace HotKeyModifier {
inline constexpr HotKeyModifiers command = 0x0100;
inline constexpr HotKeyModifiers shift = 0x0200;
inline constexpr HotKeyModifiers option = 0x0800;
inline constexpr HotKeyModifiers control = 0x1000;
}  // namespace HotKeyModifier

/// A registered hot key. Destroying it unregisters.
class HotKeyRegistration {
  public:
    virtual ~HotKeyRegistration() = default;
};

/// The installed receiver of the edges. Destroying it ends the delivery.
class HotKeyHandler {
  public:
    virtual ~HotKeyHandler() = default;
};

/// What the system identifies a hot key of ours by.
struct HotKeyIdentity {
    std::uint32_t signature = 0;
    std::uint32_t id = 0;

    bool operator==(const HotKeyIdentity&) const = default;
};

/// Why the system refused a hot key: its own status number, not 0.
struct HotKeyRefusal {
    int status = 0;

    bool operator==(const HotKeyRefusal&) const = default;
};

/// System-wide key combinations that report both edges. Main thread.
class HotKeyService {
  public:
    using Edge = std::function<void()>;
    using Change = std::function<void(std::optional<HotKeyRefusal>)>;
    using Result = std::variant<std::unique_ptr<HotKeyRegistration>, HotKeyRefusal>;

    virtual ~HotKeyService() = default;

    /// From now on the edges of every registered hot key are delivered on the main thread: one press and one
    /// release for each hold. Auto-repeat gives no further edges; a release that the system lost (locked
    /// screen, other console) is delivered when the loss is noticed. `changed` tells that a hot key which was
    /// registered does not work any more, or not under all lock keys, because the keyboard changed and the
    /// system refused to register it anew; and with nullopt that it works again. The handler must not outlive
    /// the service.
    virtual std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) = 0;

    /// Takes the combination from every other application. A refused one leaves nothing registered.
    virtual Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) = 0;

    /// What the user's layout prints on a key now, in upper case; empty if the system does not tell.
    virtual QString keyLabel(KeyCode) { return {}; }
};

}  // namespace parlivo
