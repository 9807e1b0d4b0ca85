#pragma once

#include "platform/HotKeyService.h"

#include <QStringView>

#include <cstdint>
#include <memory>

namespace parlivo {

/// Modifier flags of a synthesised key, as Quartz event flags.
using KeyFlags = std::uint64_t;
namespace KeyFlag {
inline constexpr KeyFlags none = 0;
inline constexpr KeyFlags command = 0x100000;
}  // namespace KeyFlag

/// A source of key events for one text or one shortcut. While it exists the keyboard is in the state that
/// typing needs (Caps Lock off, modifiers that the user still held let go); destroying it gives the user's
/// state back.
///
/// All operations return when the event is on its way to the focused window; an event that cannot be made is
/// skipped.
class KeyEventSource {
  public:
    virtual ~KeyEventSource() = default;

    /// Presses and releases a key by position, with exactly these modifiers. (V with Command is the paste
    /// shortcut: a system whose applications paste with other keys presses those.)
    virtual void postKey(KeyCode key, KeyFlags flags) = 0;

    /// Types one user-perceived character (one or more UTF-16 units) of the text that the source was made
    /// for.
    virtual void postCharacter(QStringView character) = 0;
};

/// Synthesised key strokes. Used on the pipeline queue only.
class KeyboardSynthesizer {
  public:
    virtual ~KeyboardSynthesizer() = default;

    /// Readies what texts commonly need, so that the first one does not wait for it. Never necessary.
    virtual void prepare() = 0;

    /// A source that can type every character of `text`. Null if the text needs more characters at once than
    /// this keyboard can be given (it should be pasted) or if the system has no way to type. May take
    /// some tens of milliseconds for characters that the keyboard does not have, and 1 s more while the user
    /// holds modifiers.
    virtual std::unique_ptr<KeyEventSource> makeSource(QStringView text) = 0;

    /// A source for shortcuts only; null if the system has no way to send keys.
    virtual std::unique_ptr<KeyEventSource> makeShortcutSource() = 0;
};

}  // namespace parlivo
