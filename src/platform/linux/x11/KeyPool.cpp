// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyPool.h"

#include "platform/linux/x11/NoOpKey.h"

#include <algorithm>
#include <utility>

namespace parlivo::x11 {

void KeyPool::adopt(xcb_keycode_t code, Pair pair) {
    slots_[{false, code}] = {pair.plain, 0};
    slots_[{true, code}] = {pair.shifted, 0};
}

void KeyPool::reconcile(const KeyMap& map) {
    for (unsigned i = map.first(); i <= map.last(); ++i) {
        const auto code = static_cast<xcb_keycode_t>(i);
        const Pair now = pair(code);
        if (now != Pair{} && map.entry(code) == entry(now)) continue;
        if (map.isSpare(code) && code != noOpKey) {
            adopt(code, {});
        } else {
            remove(code);
        }
    }
    std::erase_if(slots_, [&map](const auto& slot) { return !map.contains(slot.first.code); });
}

std::optional<std::set<xcb_keycode_t>> KeyPool::assign(const std::vector<KeySymbol>& symbols) {
    const std::set<KeySymbol> distinct(symbols.begin(), symbols.end());
    if (distinct.size() > capacity()) return std::nullopt;
    uses_ += symbols.size();
    std::uint64_t use = uses_;
    std::map<KeySymbol, std::uint64_t> missing;
    for (const KeySymbol symbol : symbols) {
        const auto place = holder(symbol);
        if (place == slots_.end()) {
            missing.emplace(symbol, use);
        } else {
            place->second.lastUse = std::max(place->second.lastUse, use);
        }
        --use;
    }
    std::set<xcb_keycode_t> changed;
    for (const auto& [symbol, lastUse] : missing) {
        const auto place = nextToGiveUp();
        place->second = {symbol, lastUse};
        changed.insert(place->first.code);
    }
    return changed;
}

std::optional<KeyStroke> KeyPool::find(KeySymbol symbol) const {
    const auto place =
        std::ranges::find_if(slots_, [symbol](const auto& slot) { return slot.second.symbol == symbol; });
    if (symbol == 0 || place == slots_.end()) return std::nullopt;
    return KeyStroke{place->first.code, place->first.shift};
}

std::map<xcb_keycode_t, KeyPool::Pair> KeyPool::occupied() const {
    std::map<xcb_keycode_t, Pair> keys;
    for (const auto& [place, slot] : slots_) {
        if (slot.symbol != 0) keys[place.code] = pair(place.code);
    }
    return keys;
}

KeyEntry KeyPool::entry(Pair pair) {
    return KeyEntry::twoLevel(pair.plain, pair.shifted);
}

KeyPool::Pair KeyPool::pair(xcb_keycode_t code) const {
    if (!has(code)) return {};
    return {slots_.at({false, code}).symbol, slots_.at({true, code}).symbol};
}

void KeyPool::remove(xcb_keycode_t code) {
    slots_.erase({false, code});
    slots_.erase({true, code});
}

KeyPool::Slots::iterator KeyPool::holder(KeySymbol symbol) {
    return std::ranges::find_if(slots_, [symbol](const auto& slot) { return slot.second.symbol == symbol; });
}

KeyPool::Slots::iterator KeyPool::nextToGiveUp() {
    return std::ranges::min_element(
        slots_, {}, [](const auto& slot) { return std::pair(slot.second.symbol != 0, slot.second.lastUse); });
}

}  // namespace parlivo::x11
