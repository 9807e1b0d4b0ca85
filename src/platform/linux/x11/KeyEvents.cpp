#include "platform/linux/x11/KeyEvents.h"

#include "support/Clock.h"

#include <xkbcommon/xkbcommon.h>

#include <utility>

namespace parlivo::x11 {

namespace {

using namespace std::chrono_literals;

/// A program that sets a layout changes the map several times in a row.
constexpr auto mapQuietness = 30ms;
constexpr auto longestMapUnrest = 500ms;

namespace MacKey {
constexpr KeyCode v = 9;
constexpr KeyCode returnKey = 36;
constexpr KeyCode tab = 48;
}  // namespace MacKey

}  // namespace

KeyEvents::KeyEvents(X11Keyboard& keyboard, SymbolKeys& keys, std::vector<KeySymbol> symbols)
    : keyboard_(keyboard), keys_(keys), symbols_(std::move(symbols)), truce_(keyboard) {}

std::unique_ptr<KeyEventSource> KeyEvents::make(X11Keyboard& keyboard, SymbolKeys& keys,
                                                std::vector<KeySymbol> symbols) {
    // The truce comes first: a modifier that is still held may be the one that chooses the layout.
    std::unique_ptr<KeyEvents> events(new KeyEvents(keyboard, keys, std::move(symbols)));
    if (!keys.refresh()) return nullptr;
    events->letGoOfShift();
    // Read only now: the first key that comes from XTEST's keyboard after the user's makes the server tell of
    // a new map, which would hold the text up until the map is quiet.
    if (!keys.makeReady(events->symbols_)) return nullptr;
    return events;
}

KeyEvents::~KeyEvents() {
    keys_.textEnded();
}

void KeyEvents::postKey(KeyCode key, KeyFlags flags) {
    truce_.renew();
    if (key == MacKey::returnKey && flags == KeyFlag::none) post(XKB_KEY_Return);
    if (key == MacKey::tab && flags == KeyFlag::none) post(XKB_KEY_Tab);
    // The one chord with which terminals paste as well as all others.
    const auto insert = keys_.find(XKB_KEY_Insert);
    if (key == MacKey::v && flags == KeyFlag::command && insert) tapShifted(insert->code);
    keyboard_.flush();
}

void KeyEvents::postCharacter(QStringView character) {
    truce_.renew();
    followMapChanges();
    const auto symbols = keySymbols(character);
    for (const KeySymbol symbol : symbols) post(symbol);
    keyboard_.flush();
}

void KeyEvents::letGoOfShift() {
    // All programs that type share XTEST's keyboard. One that left Shift down there, with the user's own
    // Shift having come up since, would make the server take our first press of it for a repetition.
    if (const auto shift = keys_.find(XKB_KEY_Shift_L)) keyboard_.press(shift->code, X11Keyboard::Press::Up);
}

void KeyEvents::followMapChanges() {
    if (!keyboard_.mapChanged()) return;
    const Clock::Deadline unrest(longestMapUnrest);
    do {
        keys_.refresh();
    } while (!unrest.passed() && Clock::sleepFor(mapQuietness) && keyboard_.mapChanged());
    keys_.makeReady(symbols_);
}

void KeyEvents::post(KeySymbol symbol) {
    const auto stroke = keys_.find(symbol);
    if (!stroke) return;
    if (stroke->shift) {
        tapShifted(stroke->code);
    } else {
        tap(stroke->code);
    }
}

void KeyEvents::tap(xcb_keycode_t key) {
    keyboard_.press(key, X11Keyboard::Press::Down);
    keyboard_.press(key, X11Keyboard::Press::Up);
}

void KeyEvents::tapShifted(xcb_keycode_t key) {
    const auto shift = keys_.find(XKB_KEY_Shift_L);
    if (!shift) return;
    keyboard_.press(shift->code, X11Keyboard::Press::Down);
    tap(key);
    keyboard_.press(shift->code, X11Keyboard::Press::Up);
}

}  // namespace parlivo::x11
