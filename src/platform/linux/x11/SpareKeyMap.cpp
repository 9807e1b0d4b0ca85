// SPDX-License-Identifier: MIT
#include "platform/linux/x11/SpareKeyMap.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <string_view>

namespace parlivo::x11 {

namespace {

using namespace std::chrono_literals;

/// Chromium reads a changed map late; with less, one short text in ten lost a character.
constexpr auto settling = 50ms;
/// How late a receiver may read its keys when others want their places.
constexpr auto lateReading = 1000ms;

/// The journal on the root window: a key code and its two keysyms for each assigned key.
constexpr std::string_view journalName = "_PARLIVO_SPARE_KEYS";
constexpr std::size_t journalFields = 3;
/// The selection that the program owns which writes the journal.
constexpr std::string_view ownerName = "_PARLIVO_SPARE_KEYS_OWNER";

/// Whether a key that changes from `before` to `after` ceases to enter something.
bool losesSymbol(KeyPool::Pair before, KeyPool::Pair after) {
    return (before.plain != 0 && before.plain != after.plain) ||
           (before.shifted != 0 && before.shifted != after.shifted);
}

}  // namespace

SpareKeyMap::SpareKeyMap(X11Keyboard& keyboard)
    : keyboard_(keyboard), ownsJournal_(keyboard.takeName(ownerName)) {
    if (ownsJournal_) adoptStaleKeys();
}

SpareKeyMap::~SpareKeyMap() {
    restoreKeys();
}

void SpareKeyMap::adoptStaleKeys() {
    const auto journal = keyboard_.rootProperty(journalName);
    for (std::size_t i = 0; i + journalFields <= journal.size(); i += journalFields) {
        const auto code = static_cast<xcb_keycode_t>(journal[i]);
        pool_.adopt(code, {journal[i + 1], journal[i + 2]});
        originals_.emplace(code, KeyEntry{});
    }
}

bool SpareKeyMap::makeReady(const std::vector<KeySymbol>& symbols) {
    if (!refresh()) return false;
    const auto before = pool_.occupied();
    const auto changed = pool_.assign(notOnLayout(symbols));
    if (!changed) return false;
    if (changed->empty()) return true;
    const auto after = pool_.occupied();
    const bool displaces = std::ranges::any_of(
        before, [&after](const auto& key) { return losesSymbol(key.second, after.at(key.first)); });
    if (displaces) Clock::sleepUntil(lastTextEnd_ + Clock::scaled(lateReading));
    assign(*changed);
    Clock::sleepFor(settling);
    return true;
}

void SpareKeyMap::prefill(const std::vector<KeySymbol>& symbols) {
    if (!refresh()) return;
    auto wanted = notOnLayout(symbols);
    if (wanted.size() > pool_.capacity()) wanted.resize(pool_.capacity());
    const auto changed = pool_.assign(wanted);
    if (changed && !changed->empty()) assign(*changed);
}

std::optional<KeyStroke> SpareKeyMap::find(KeySymbol symbol) const {
    const auto stroke = layout_.find(symbol);
    return stroke ? stroke : pool_.find(symbol);
}

bool SpareKeyMap::refresh() {
    auto map = keyboard_.map();
    if (!map) return false;
    map_ = std::move(*map);
    pool_.reconcile(map_);
    std::set<xcb_keycode_t> assigned;
    for (const auto& key : pool_.occupied()) assigned.insert(key.first);
    const auto state = keyboard_.state();
    const auto numLock = static_cast<Modifiers>(state.locked & map_.modifiersOf(XKB_KEY_Num_Lock));
    layout_ = LayoutMap(map_, {state.group, numLock}, assigned);
    return true;
}

std::vector<KeySymbol> SpareKeyMap::notOnLayout(const std::vector<KeySymbol>& symbols) const {
    std::vector<KeySymbol> missing;
    for (const KeySymbol symbol : symbols) {
        if (!layout_.find(symbol) && std::ranges::find(missing, symbol) == missing.end()) {
            missing.push_back(symbol);
        }
    }
    return missing;
}

void SpareKeyMap::assign(const std::set<xcb_keycode_t>& keys) {
    const auto pairs = pool_.occupied();
    for (const xcb_keycode_t key : keys) {
        originals_.emplace(key, map_.entry(key));
        map_.setEntry(key, KeyPool::entry(pairs.at(key)));
    }
    // Sent together, so that a kill cannot come in between.
    writeJournal();
    keyboard_.setMap(map_, *keys.begin(), *keys.rbegin());
    // Reading it back tells our own change from those of others.
    refresh();
}

void SpareKeyMap::restoreKeys() {
    if (!refresh()) return;
    const auto pairs = pool_.occupied();
    for (const auto& pair : pairs) map_.setEntry(pair.first, originals_[pair.first]);
    if (!pairs.empty()) keyboard_.setMap(map_, pairs.begin()->first, pairs.rbegin()->first);
    if (ownsJournal_) keyboard_.deleteRootProperty(journalName);
    keyboard_.sync();
}

void SpareKeyMap::writeJournal() {
    if (!ownsJournal_) return;
    std::vector<std::uint32_t> journal;
    for (const auto& [key, pair] : pool_.occupied()) {
        journal.insert(journal.end(), {key, pair.plain, pair.shifted});
    }
    keyboard_.setRootProperty(journalName, journal);
}

}  // namespace parlivo::x11
