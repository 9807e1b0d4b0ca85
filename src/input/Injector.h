// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "settings/Settings.h"
#include "support/Clock.h"

#include <QString>

/// Puts text into whatever application has the keyboard focus. Pipeline queue only, unless said otherwise;
/// the process must be allowed to send keys.
namespace parlivo::Injector {

/// What became of a text.
enum class Outcome {
    Delivered,        ///< all of it is on its way to the focused window
    CutOff,           ///< the program's end came first: some of it, or nothing, was sent
    LeftOnClipboard,  ///< nothing of it could be sent: it is on the pasteboard for the user
    RestOnClipboard,  ///< the same with all that follows what was sent
    Lost,             ///< what could not be sent is not on the pasteboard either
};

/// The pause after each character that a typing speed stands for.
Clock::Duration pauseAfterCharacter(TypingSpeed speed);

/// Types `text` character by character (user-perceived characters) at the pace that the settings choose.
/// Returns when the last pause has passed. A text with more different characters than the keyboard can be
/// given is pasted, and so is the rest of a text when the keyboard loses characters midway.
Outcome typeText(const QString& text);

/// Pastes `text` through the pasteboard. Returns when the shortcut has been posted and, where the system
/// tells that, somebody has read the text; half a second later the main queue puts back the plain text that
/// was there before. Where there was none, `text` stays, and so it does where nobody read it.
Outcome paste(const QString& text);

/// Posts one key down and one key up.
Posted postKey(KeyCode key, KeyEventSource& source, KeyFlags flags);

/// Puts back what the last paste displaced, if that is still to be done: at the program's end, when the main
/// queue runs no more. Waits, half a second at most, until the receiver of the paste had its time; events are
/// handled meanwhile. Main thread, after the pipeline queue has ended.
void finishRestore();

}  // namespace parlivo::Injector
