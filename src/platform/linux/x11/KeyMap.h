// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeySymbols.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace parlivo::x11 {

/// A set of the eight real modifiers, as the protocol's bits.
using Modifiers = std::uint8_t;

/// What one key code does, in the terms of the X Keyboard Extension: for each of up to four groups
/// (layouts) a key type and `width` keysyms.
struct KeyEntry {
    std::array<std::uint8_t, 4> types{};
    std::uint8_t groupInfo = 0;
    std::uint8_t width = 0;
    std::vector<KeySymbol> symbols;

    /// A key with two keysyms, the second with Shift whatever other modifiers are on, in every group.
    static KeyEntry twoLevel(KeySymbol plain, KeySymbol shifted);

    bool operator==(const KeyEntry&) const = default;
};

/// How modifiers choose among the keysyms of a key.
struct KeyType {
    struct Choice {
        Modifiers modifiers = 0;
        std::uint8_t level = 0;
    };
    Modifiers mask = 0;
    std::vector<Choice> choices;

    std::uint8_t level(Modifiers modifiers) const;
};

/// The core keyboard's map at one moment.
class KeyMap {
  public:
    KeyMap() = default;
    KeyMap(xcb_keycode_t first, std::vector<KeyEntry> keys, std::vector<KeyType> types,
           std::vector<Modifiers> modifiers);

    /// nullopt if the server does not answer.
    static std::optional<KeyMap> read(xcb_connection_t* connection);

    /// Gives the keyboard the entries of this map for the keys from `from` to `to`. One request, and one
    /// notice to every client.
    void write(xcb_connection_t* connection, xcb_keycode_t from, xcb_keycode_t to) const;

    xcb_keycode_t first() const { return first_; }
    xcb_keycode_t last() const { return static_cast<xcb_keycode_t>(first_ + keys_.size() - 1); }
    bool contains(xcb_keycode_t code) const { return code >= first() && code <= last(); }
    const KeyEntry& entry(xcb_keycode_t code) const { return keys_.at(code - first_); }
    void setEntry(xcb_keycode_t code, KeyEntry entry) { keys_.at(code - first_) = std::move(entry); }

    /// The keysym of a key in a group under modifiers; NoSymbol (0) when there is none.
    KeySymbol symbol(xcb_keycode_t code, std::uint8_t group, Modifiers modifiers) const;
    /// The modifiers that a key stands for.
    Modifiers modifiers(xcb_keycode_t code) const { return modifiers_.at(code - first_); }
    /// All modifiers of the keys that carry a keysym.
    Modifiers modifiersOf(KeySymbol symbol) const;
    /// Whether a key does nothing at all.
    bool isSpare(xcb_keycode_t code) const;

  private:
    xcb_keycode_t first_ = 8;
    std::vector<KeyEntry> keys_;
    std::vector<KeyType> types_;
    std::vector<Modifiers> modifiers_;
};

}  // namespace parlivo::x11
