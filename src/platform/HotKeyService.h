// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

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
/// From here on: the kernel's code (linux/input-event-codes.h) of a key for which macOS has none, added.
inline constexpr KeyCode firstKernelCode = 0x10000;
inline constexpr KeyCode lastCode = firstKernelCode + 0xffff;
}  // namespace VirtualKey

/// Modifiers of a hot key, as a Carbon mask.
using HotKeyModifiers = std::uint32_t;
namespace HotKeyModifier {
inline constexpr HotKeyModifiers command = 0x0100;
inline constexpr HotKeyModifiers shift = 0x0200;
inline constexpr HotKeyModifiers option = 0x0800;
inline constexpr HotKeyModifiers control = 0x1000;
}  // namespace HotKeyModifier

/// A key and what is held down with it.
struct HotKeyCombination {
    KeyCode key = 0;
    HotKeyModifiers modifiers = 0;
};

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

/// Why the system refused a hot key.
struct HotKeyRefusal {
    enum class Reason {
        Taken,     ///< another program holds it
        Unusable,  ///< the keyboard or the session has no such key
        NotSetUp,  ///< it can be had, but the user has to allow it first (Platform::sessionHints)
    };
    int status = 0;  ///< the system's own number, not 0
    Reason reason = Reason::Taken;

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

    /// Which edges of a hot key the system tells of.
    enum class Edges {
        Both,
        PressesOnly,  ///< `released` follows at once, if at all: one press starts, the next one stops
        None,         ///< there are no hot keys; the user may bind a key to a command of this program's
    };
    virtual Edges edges() const { return Edges::Both; }

    /// How often other programs hold the combination that the user would like.
    enum class Contention {
        Rare,    ///< a refusal is an accident; the user chooses one of the presets
        Common,  ///< window managers and others hold many; the user is told, and may choose any combination
    };
    virtual Contention contention() const { return Contention::Rare; }

    /// The position of a key that the toolkit tells of by its native scan code; nullopt if it can be no hot
    /// key.
    virtual std::optional<KeyCode> keyCodeOf(std::uint32_t /*nativeScanCode*/) const { return std::nullopt; }

    /// `mayBeFree` is called on the main thread when a combination that was refused may be free: the
    /// keyboard's map or the window manager changed. An empty function ends the watch, which may cost
    /// wake-ups.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): those who watch keep it
    virtual void watchRefused(std::function<void()> /*mayBeFree*/) {}

    /// Whether registering one of these is worth a try, found out at less cost than by trying. True where
    /// that cannot be told.
    virtual bool anyMayBeFree(const std::vector<HotKeyCombination>& /*refused*/) { return true; }

    /// What the user's layout prints on a key now, in upper case; empty if the system does not tell.
    virtual QString keyLabel(KeyCode) { return {}; }
};

}  // namespace parlivo
