#include "platform/linux/x11/SymbolKeys.h"

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

/// The note on the root window: a key code and its two keysyms for each lent key.
constexpr std::string_view noteName = "_PARLIVO_LENT_KEYS";
constexpr std::size_t noteFields = 3;
/// Had by the program that keeps the note, as long as it lives.
constexpr std::string_view borrowerName = "_PARLIVO_KEY_BORROWER";

/// Whether a key that changes from `before` to `after` ceases to enter something.
bool losesSymbol(KeyPool::Pair before, KeyPool::Pair after) {
    return (before.plain != 0 && before.plain != after.plain) ||
           (before.shifted != 0 && before.shifted != after.shifted);
}

}  // namespace

SymbolKeys::SymbolKeys(X11Keyboard& keyboard)
    : keyboard_(keyboard), onlyBorrower_(keyboard.takeName(borrowerName)) {
    if (onlyBorrower_) takeOverLeftovers();
}

SymbolKeys::~SymbolKeys() {
    giveBack();
}

void SymbolKeys::takeOverLeftovers() {
    const auto note = keyboard_.rootProperty(noteName);
    for (std::size_t i = 0; i + noteFields <= note.size(); i += noteFields) {
        const auto code = static_cast<xcb_keycode_t>(note[i]);
        pool_.adopt(code, {note[i + 1], note[i + 2]});
        originals_.emplace(code, KeyEntry{});
    }
}

bool SymbolKeys::makeReady(const std::vector<KeySymbol>& symbols) {
    if (!refresh()) return false;
    const auto before = pool_.occupied();
    const auto changed = pool_.assign(notOnLayout(symbols));
    if (!changed) return false;
    if (changed->empty()) return true;
    const auto after = pool_.occupied();
    const bool displaces = std::ranges::any_of(
        before, [&after](const auto& key) { return losesSymbol(key.second, after.at(key.first)); });
    if (displaces) Clock::sleepUntil(lastTextEnd_ + Clock::scaled(lateReading));
    lend(*changed);
    Clock::sleepFor(settling);
    return true;
}

void SymbolKeys::prefill(const std::vector<KeySymbol>& symbols) {
    if (!refresh()) return;
    auto wanted = notOnLayout(symbols);
    if (wanted.size() > pool_.capacity()) wanted.resize(pool_.capacity());
    const auto changed = pool_.assign(wanted);
    if (changed && !changed->empty()) lend(*changed);
}

std::optional<KeyStroke> SymbolKeys::find(KeySymbol symbol) const {
    const auto stroke = layout_.find(symbol);
    return stroke ? stroke : pool_.find(symbol);
}

bool SymbolKeys::refresh() {
    auto map = keyboard_.map();
    if (!map) return false;
    map_ = std::move(*map);
    pool_.reconcile(map_);
    std::set<xcb_keycode_t> lent;
    for (const auto& key : pool_.occupied()) lent.insert(key.first);
    const auto state = keyboard_.state();
    const auto numLock = static_cast<Modifiers>(state.locked & map_.modifiersOf(XKB_KEY_Num_Lock));
    layout_ = LayoutMap(map_, {state.group, numLock}, lent);
    return true;
}

std::vector<KeySymbol> SymbolKeys::notOnLayout(const std::vector<KeySymbol>& symbols) const {
    std::vector<KeySymbol> missing;
    for (const KeySymbol symbol : symbols) {
        if (!layout_.find(symbol) && std::ranges::find(missing, symbol) == missing.end()) {
            missing.push_back(symbol);
        }
    }
    return missing;
}

void SymbolKeys::lend(const std::set<xcb_keycode_t>& keys) {
    const auto pairs = pool_.occupied();
    for (const xcb_keycode_t key : keys) {
        originals_.emplace(key, map_.entry(key));
        map_.setEntry(key, KeyPool::entry(pairs.at(key)));
    }
    // In one parcel, so that being killed does not come in between.
    writeNote();
    keyboard_.setMap(map_, *keys.begin(), *keys.rbegin());
    // Reading it back tells our own change from those of others.
    refresh();
}

void SymbolKeys::giveBack() {
    if (!refresh()) return;
    const auto pairs = pool_.occupied();
    for (const auto& pair : pairs) map_.setEntry(pair.first, originals_[pair.first]);
    if (!pairs.empty()) keyboard_.setMap(map_, pairs.begin()->first, pairs.rbegin()->first);
    if (onlyBorrower_) keyboard_.deleteRootProperty(noteName);
    keyboard_.sync();
}

void SymbolKeys::writeNote() {
    if (!onlyBorrower_) return;
    std::vector<std::uint32_t> note;
    for (const auto& [key, pair] : pool_.occupied()) {
        note.insert(note.end(), {key, pair.plain, pair.shifted});
    }
    keyboard_.setRootProperty(noteName, note);
}

}  // namespace parlivo::x11
