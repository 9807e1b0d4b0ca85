#include "input/Injector.h"

#include "input/Pace.h"
#include "input/PendingRestore.h"
#include "platform/Platform.h"
#include "settings/Config.h"
#include "support/Clock.h"
#include "support/MainQueue.h"
#include "support/Text.h"

namespace parlivo::Injector {

namespace {

using namespace std::chrono_literals;

constexpr auto naturalPause = 12'000us;
constexpr auto fastPause = 3'500us;
/// The time until every application sees the new contents of the pasteboard.
constexpr auto pasteboardSettling = 50ms;
constexpr auto restoreDelay = 500ms;

namespace Key {
constexpr KeyCode v = 9;
constexpr KeyCode returnKey = 36;
constexpr KeyCode tab = 48;
}  // namespace Key

bool isLineEnd(QStringView character) {
    return character == QLatin1String("\n") || character == QLatin1String("\r");
}

void post(QStringView character, KeyEventSource& source) {
    if (isLineEnd(character)) {
        postKey(Key::returnKey, source, KeyFlag::none);
    } else if (character == QLatin1String("\t")) {
        postKey(Key::tab, source, KeyFlag::none);
    } else {
        source.postCharacter(character);
    }
}

PendingRestore& pendingRestore() {
    static PendingRestore pending;
    return pending;
}

void scheduleRestore(PendingRestore::Ticket ticket) {
    static const Lifetime always;
    MainQueue::after(restoreDelay, always.token(), [ticket] {
        const auto kept = pendingRestore().take(ticket);
        if (kept && !kept->isEmpty()) Platform::current().pasteboard().restore(*kept);
    });
}

}  // namespace

Clock::Duration pauseAfterCharacter(TypingSpeed speed) {
    return speed == TypingSpeed::Natural ? naturalPause : fastPause;
}

void typeText(const QString& text) {
    const auto source = Platform::current().keyboard().makeSource(text);
    if (!source) {
        paste(text);
        return;
    }
    Pace pace(pauseAfterCharacter(Config::get(Settings::typingSpeed)), Clock::now());
    Text::forEachCharacter(text, [&](QStringView character) {
        post(character, *source);
        return Clock::sleepUntil(pace.after(Clock::now()));
    });
}

void paste(const QString& text) {
    Pasteboard& pasteboard = Platform::current().pasteboard();
    // A paste whose restore is still to come is called off first: what it kept is what the user had.
    const auto interruptedRestore = pendingRestore().callOff();
    const auto ticket = pendingRestore().keep(text, pasteboard.texts(), interruptedRestore);
    pasteboard.setText(text, Pasteboard::History::Omit);
    if (!Clock::sleepFor(pasteboardSettling)) return;
    const auto source = Platform::current().keyboard().makeShortcutSource();
    if (!source) {
        // Nothing was pasted: the text stays where the user can take it from.
        pendingRestore().callOff();
        return;
    }
    postKey(Key::v, *source, KeyFlag::command);
    scheduleRestore(ticket);
}

void postKey(KeyCode key, KeyEventSource& source, KeyFlags flags) {
    source.postKey(key, flags);
}

}  // namespace parlivo::Injector
