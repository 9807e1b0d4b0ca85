#pragma once

#include "platform/KeyboardSynthesizer.h"
#include "settings/Settings.h"
#include "support/Clock.h"

#include <QString>

/// Puts text into whatever application has the keyboard focus. Pipeline queue only; the process must be
/// allowed to send keys.
namespace parlivo::Injector {

/// The pause after each typed character; a text that is pasted for its length has that of Fast.
Clock::Duration pauseAfterCharacter(TypingSpeed speed);

/// Types `text` character by character (user-perceived characters) at the pace that the settings choose.
/// Returns when the last pause has passed; the end of the program ends the typing. A text with more
/// different characters than the keyboard can be given is pasted.
void typeText(const QString& text);

/// Pastes `text` through the pasteboard. Returns when the shortcut has been posted; half a second later the
/// main queue puts back the plain text that was there before. Where there was none, `text` stays.
void paste(const QString& text);

/// Posts one key down and one key up.
void postKey(KeyCode key, KeyEventSource& source, KeyFlags flags);

}  // namespace parlivo::Injector
