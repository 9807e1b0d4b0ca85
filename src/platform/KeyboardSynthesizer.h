// SPDX-License-Identifier: MIT
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

/// How a source takes text.
enum class TextIntake {
    Characters,  ///< by postKey and postCharacter, one user-perceived character at a time
    Pieces,      ///< by postPiece, several characters at a time, line ends and tabs included
};

/// What became of an event.
enum class Posted {
    Yes,       ///< it is on its way to the focused window
    Skipped,   ///< there is no such event on this system (a control character): nothing was sent
    Failed,    ///< it could not be sent; neither can those that follow
    NotTaken,  ///< the receiver stopped taking text: nothing was sent, nor should anything else be
};

/// A source of key events for one text or one shortcut. While it exists the keyboard is in the state that
/// typing needs (Caps Lock off, modifiers that the user still held released); its destructor restores the
/// user's state.
class KeyEventSource {
  public:
    virtual ~KeyEventSource() = default;

    virtual TextIntake intake() const { return TextIntake::Characters; }

    /// Presses and releases a key by position, with exactly these modifiers. (V with Command is the paste
    /// shortcut: a system whose applications paste with other keys presses those.)
    virtual Posted postKey(KeyCode key, KeyFlags flags) = 0;

    /// Types one user-perceived character (one or more UTF-16 units) of the text that the source was made
    /// for: all of it or, with Skipped or Failed, nothing. A source that takes pieces never gets one.
    virtual Posted postCharacter(QStringView character) = 0;

    /// Enters whole characters, `maxPieceBytes` of UTF-8 at most, and waits until the receiver has taken
    /// them. A source that takes characters never gets one.
    virtual Posted postPiece(QStringView /*piece*/) { return Posted::Failed; }
    static constexpr qsizetype maxPieceBytes = 4000;
};

/// Synthesised key strokes. Used on the pipeline queue only.
class KeyboardSynthesizer {
  public:
    virtual ~KeyboardSynthesizer() = default;

    /// Prepares what texts commonly need, so that the first one does not wait for it. Never necessary.
    virtual void prepare() = 0;

    /// Whether texts can be typed at a chosen pace here; if not, every one is pasted. May change while the
    /// program runs. Any thread.
    virtual bool typesText() const { return true; }

    /// A source that can type every character of `text`. Null if the text needs more characters at once
    /// than this keyboard can be given (it should be pasted) or if the system has no way to type. May take
    /// some tens of milliseconds for characters that the keyboard does not have, and 1 s more while the user
    /// holds modifiers.
    virtual std::unique_ptr<KeyEventSource> makeSource(QStringView text) = 0;

    /// A source for shortcuts alone. Null if the system has no way to send keys.
    virtual std::unique_ptr<KeyEventSource> makeShortcutSource() = 0;
};

}  // namespace parlivo
