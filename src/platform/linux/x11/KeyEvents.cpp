// SPDX-License-Identifier: MIT
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

}  // namespace

KeyEvents::KeyEvents(X11Keyboard& keyboard, SpareKeyMap& keys, std::vector<KeySymbol> symbols)
    : keyboard_(keyboard), keys_(keys), symbols_(std::move(symbols)), guard_(keyboard) {}

std::unique_ptr<KeyEventSource> KeyEvents::make(X11Keyboard& keyboard, SpareKeyMap& keys,
                                                std::vector<KeySymbol> symbols) {
    // The guard comes first: a modifier that is still held may be the one that chooses the layout.
    std::unique_ptr<KeyEvents> events(new KeyEvents(keyboard, keys, std::move(symbols)));
    if (!keys.refresh()) return nullptr;
    events->releaseShift();
    // Read only now: the first key that comes from XTEST's keyboard after the user's makes the server tell of
    // a new map, which would hold the text up until the map is quiet.
    if (!keys.makeReady(events->symbols_)) return nullptr;
    return events;
}

KeyEvents::~KeyEvents() {
    keys_.textEnded();
}

Posted KeyEvents::postKey(KeyCode key, KeyFlags flags) {
    if (!ready()) return Posted::Failed;
    if (key == VirtualKey::returnKey && flags == KeyFlag::none) return post({XKB_KEY_Return});
    if (key == VirtualKey::tab && flags == KeyFlag::none) return post({XKB_KEY_Tab});
    if (key != VirtualKey::v || flags != KeyFlag::command) return Posted::Skipped;
    // The one chord with which terminals paste as well as all others.
    const auto insert = keys_.find(XKB_KEY_Insert);
    const auto shift = keys_.find(XKB_KEY_Shift_L);
    if (!insert || !shift) return Posted::Failed;
    tapShifted(insert->code, shift->code);
    keyboard_.flush();
    return Posted::Yes;
}

Posted KeyEvents::postCharacter(QStringView character) {
    if (!ready()) return Posted::Failed;
    const auto symbols = keySymbols(character);
    return symbols.empty() ? Posted::Skipped : post(symbols);
}

void KeyEvents::releaseShift() {
    // All programs that type share XTEST's keyboard. One that left Shift down there, with the user's own
    // Shift having come up since, would make the server take our first press of it for a repetition.
    if (const auto shift = keys_.find(XKB_KEY_Shift_L)) keyboard_.press(shift->code, X11Keyboard::Press::Up);
}

bool KeyEvents::ready() {
    guard_.waitForHeldKeys();
    return followMapChanges() && !Clock::interrupted() && keyboard_.isConnected();
}

bool KeyEvents::followMapChanges() {
    if (!keyboard_.mapChanged()) return true;
    const Clock::Deadline unrest(longestMapUnrest);
    do {
        keys_.refresh();
    } while (!unrest.passed() && Clock::sleepFor(mapQuietness) && keyboard_.mapChanged());
    return keys_.makeReady(symbols_);
}

Posted KeyEvents::post(const std::vector<KeySymbol>& symbols) {
    const auto shift = keys_.find(XKB_KEY_Shift_L);
    std::vector<KeyStroke> strokes;
    for (const KeySymbol symbol : symbols) {
        const auto stroke = keys_.find(symbol);
        if (!stroke || (stroke->shift && !shift)) return Posted::Failed;
        strokes.push_back(*stroke);
    }
    for (const KeyStroke& stroke : strokes) {
        if (stroke.shift)
            tapShifted(stroke.code, shift->code);
        else
            tap(stroke.code);
    }
    keyboard_.flush();
    return Posted::Yes;
}

void KeyEvents::tap(xcb_keycode_t key) {
    keyboard_.press(key, X11Keyboard::Press::Down);
    keyboard_.press(key, X11Keyboard::Press::Up);
}

void KeyEvents::tapShifted(xcb_keycode_t key, xcb_keycode_t shift) {
    keyboard_.press(shift, X11Keyboard::Press::Down);
    tap(key);
    keyboard_.press(shift, X11Keyboard::Press::Up);
}

}  // namespace parlivo::x11
