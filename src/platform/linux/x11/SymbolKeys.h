#pragma once

#include "platform/linux/x11/KeyPool.h"
#include "platform/linux/x11/LayoutMap.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "support/Clock.h"

#include <map>
#include <optional>
#include <vector>

namespace parlivo::x11 {

/// Knows for every character the keys that enter it, and lends the keyboard's spare keys to characters that
/// the user's layout does not have.
///
/// Lent keys stay as they are as long as this object lives, since a receiver that is slow reads its keys late
/// and by the map of that moment; its end gives them back. What a killed program left lent is recognised by a
/// note on the root window and taken over.
class SymbolKeys {
  public:
    explicit SymbolKeys(X11Keyboard& keyboard);
    ~SymbolKeys();
    SymbolKeys(const SymbolKeys&) = delete;
    SymbolKeys& operator=(const SymbolKeys&) = delete;

    /// Reads map and layout afresh. False when the server does not answer.
    bool refresh();

    /// Makes sure that all of `symbols` can be entered in the keyboard's present state. When spare keys had
    /// to be lent for that, waits until every application knows; a character of a text that ended a moment
    /// ago loses its key only after a while. False when there are too few keys.
    bool makeReady(const std::vector<KeySymbol>& symbols);

    /// Lends spare keys to as many of `symbols` as there is room for, the first ones first, without waiting.
    void prefill(const std::vector<KeySymbol>& symbols);

    /// Notes that a text ends now, whose last keys slow receivers have still to read.
    void textEnded() { lastTextEnd_ = Clock::now(); }

    /// The keys for a symbol that was made ready.
    std::optional<KeyStroke> find(KeySymbol symbol) const;

  private:
    void takeOverLeftovers();
    std::vector<KeySymbol> notOnLayout(const std::vector<KeySymbol>& symbols) const;
    void lend(const std::set<xcb_keycode_t>& keys);
    void giveBack();
    void writeNote();

    X11Keyboard& keyboard_;
    /// Whether the note is ours to keep.
    const bool onlyBorrower_;
    Clock::TimePoint lastTextEnd_;
    KeyMap map_;
    LayoutMap layout_;
    KeyPool pool_;
    /// What lent keys were before.
    std::map<xcb_keycode_t, KeyEntry> originals_;
};

}  // namespace parlivo::x11
