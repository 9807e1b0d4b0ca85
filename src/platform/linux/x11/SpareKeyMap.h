// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyPool.h"
#include "platform/linux/x11/LayoutMap.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "support/Clock.h"

#include <map>
#include <optional>
#include <vector>

namespace parlivo::x11 {

/// Knows for every character the keys that enter it, and assigns characters that the user's layout does not
/// have to the keyboard's spare keys.
///
/// Assignments stay as long as this object lives, because a slow receiver reads its keys late and by the map
/// of that moment; the destructor undoes them. They are listed in a journal, a property of the root window,
/// in which the next start finds what a killed program left behind.
class SpareKeyMap {
  public:
    explicit SpareKeyMap(X11Keyboard& keyboard);
    ~SpareKeyMap();
    SpareKeyMap(const SpareKeyMap&) = delete;
    SpareKeyMap& operator=(const SpareKeyMap&) = delete;

    /// Reads map and layout afresh. False if the server does not answer.
    bool refresh();

    /// Makes sure that all of `symbols` can be entered in the keyboard's present state. If spare keys had to
    /// be assigned for that, waits until every application knows; a character of a text that ended a moment
    /// ago loses its key only after a second. False if there are too few keys or the server does not answer.
    bool makeReady(const std::vector<KeySymbol>& symbols);

    /// Assigns spare keys to as many of `symbols` as there is room for, the first ones first, without
    /// waiting.
    void prefill(const std::vector<KeySymbol>& symbols);

    /// Records that a text ends now, whose last keys slow receivers have still to read.
    void textEnded() { lastTextEnd_ = Clock::now(); }

    /// The keys for a symbol that was made ready.
    std::optional<KeyStroke> find(KeySymbol symbol) const;

  private:
    void adoptStaleKeys();
    std::vector<KeySymbol> notOnLayout(const std::vector<KeySymbol>& symbols) const;
    void assign(const std::set<xcb_keycode_t>& keys);
    void restoreKeys();
    void writeJournal();

    X11Keyboard& keyboard_;
    /// Whether the journal is this program's to write: one program on a display at a time has it.
    const bool ownsJournal_;
    Clock::TimePoint lastTextEnd_;
    KeyMap map_;
    LayoutMap layout_;
    KeyPool pool_;
    /// What assigned keys were before.
    std::map<xcb_keycode_t, KeyEntry> originals_;
};

}  // namespace parlivo::x11
