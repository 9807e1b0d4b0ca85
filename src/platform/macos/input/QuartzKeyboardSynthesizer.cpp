// SPDX-License-Identifier: MIT
#include "platform/macos/input/QuartzKeyboardSynthesizer.h"

#include "platform/macos/base/CoreFoundationHandle.h"

#include <ApplicationServices/ApplicationServices.h>

#include <vector>

namespace parlivo {

namespace {

using EventHandle = CoreFoundationHandle<CGEventRef>;
using SourceHandle = CoreFoundationHandle<CGEventSourceRef>;

/// The key code of an event that is nothing but its text.
constexpr CGKeyCode textKey = 0;

class QuartzKeyEventSource : public KeyEventSource {
  public:
    explicit QuartzKeyEventSource(SourceHandle source) : source_(std::move(source)) {}

    /// Both events are made before the first is posted, so that no other thread's work comes between them.
    Posted postKey(KeyCode key, KeyFlags flags) override {
        return post(make(static_cast<CGKeyCode>(key), true, flags),
                    make(static_cast<CGKeyCode>(key), false, flags));
    }

    Posted postCharacter(QStringView character) override {
        Posted posted = Posted::Skipped;
        const std::vector<UniChar> units(character.utf16(), character.utf16() + character.size());
        for (const bool down : {true, false}) {
            // Whatever modifier the user still holds must not turn the text into a shortcut.
            const EventHandle event = make(textKey, down, KeyFlag::none);
            if (!event) continue;
            CGEventKeyboardSetUnicodeString(event.get(), static_cast<UniCharCount>(units.size()),
                                            units.data());
            CGEventPost(kCGHIDEventTap, event.get());
            posted = Posted::Yes;
        }
        return posted;
    }

  private:
    EventHandle make(CGKeyCode key, bool down, KeyFlags flags) const {
        EventHandle event(CGEventCreateKeyboardEvent(source_.get(), key, down));
        if (event) CGEventSetFlags(event.get(), static_cast<CGEventFlags>(flags));
        return event;
    }

    static Posted post(const EventHandle& down, const EventHandle& up) {
        if (down) CGEventPost(kCGHIDEventTap, down.get());
        if (up) CGEventPost(kCGHIDEventTap, up.get());
        return down || up ? Posted::Yes : Posted::Skipped;
    }

    SourceHandle source_;
};

}  // namespace

std::unique_ptr<KeyEventSource> QuartzKeyboardSynthesizer::makeSource(QStringView) {
    return makeShortcutSource();
}

/// Without a source events can still be made, and have the system's own state then.
std::unique_ptr<KeyEventSource> QuartzKeyboardSynthesizer::makeShortcutSource() {
    SourceHandle source(CGEventSourceCreate(kCGEventSourceStateCombinedSessionState));
    return std::make_unique<QuartzKeyEventSource>(std::move(source));
}

}  // namespace parlivo
