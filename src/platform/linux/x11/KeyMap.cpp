// SPDX-License-Identifier: MIT
#include "platform/linux/x11/KeyMap.h"

#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbXkb.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <cstddef>
#include <utility>

// The layout of requests and replies: the X Consortium's "The X Keyboard Extension", version 1.0, section 16
// and appendix D, KB_GETMAP and KB_SETMAP.
namespace parlivo::x11 {

namespace {

/// Key types that every keyboard has at fixed places (section 7.2.1).
constexpr std::uint8_t twoLevelType = 1;

constexpr std::uint8_t groupCountMask = 0x0f;
constexpr std::uint8_t outOfRangeMask = 0xc0;
constexpr std::uint8_t clampIntoRange = 0x40;
constexpr std::uint8_t redirectIntoRange = 0x80;

/// Which of its groups a key uses while `group` is in force.
std::size_t usedGroup(const KeyEntry& key, std::uint8_t group) {
    const std::size_t count = key.groupInfo & groupCountMask;
    if (group < count) return group;
    switch (key.groupInfo & outOfRangeMask) {
        case clampIntoRange:
            return count - 1;
        case redirectIntoRange: {
            const std::size_t target = (key.groupInfo >> 4) & 0x3;
            return target < count ? target : 0;
        }
        default:
            return group % count;
    }
}

std::vector<KeyType> readTypes(const xcb_xkb_get_map_reply_t* reply, const xcb_xkb_get_map_map_t& parts) {
    std::vector<KeyType> types;
    auto type = xcb_xkb_get_map_map_types_rtrn_iterator(reply, &parts);
    for (; type.rem > 0; xcb_xkb_key_type_next(&type)) {
        KeyType& added = types.emplace_back(KeyType{type.data->mods_mask, {}});
        auto entry = xcb_xkb_key_type_map_iterator(type.data);
        for (; entry.rem > 0; xcb_xkb_kt_map_entry_next(&entry)) {
            if (entry.data->active) added.choices.push_back({entry.data->mods_mask, entry.data->level});
        }
    }
    return types;
}

std::vector<KeyEntry> readKeys(const xcb_xkb_get_map_reply_t* reply, const xcb_xkb_get_map_map_t& parts) {
    std::vector<KeyEntry> keys;
    auto key = xcb_xkb_get_map_map_syms_rtrn_iterator(reply, &parts);
    for (; key.rem > 0; xcb_xkb_key_sym_map_next(&key)) {
        KeyEntry& added = keys.emplace_back();
        std::copy_n(std::begin(key.data->kt_index), added.types.size(), added.types.begin());
        added.groupInfo = key.data->groupInfo;
        added.width = key.data->width;
        const KeySymbol* symbols = xcb_xkb_key_sym_map_syms(key.data);
        added.symbols.assign(symbols, symbols + xcb_xkb_key_sym_map_syms_length(key.data));
    }
    return keys;
}

std::vector<Modifiers> readModifiers(const xcb_xkb_get_map_reply_t* reply,
                                     const xcb_xkb_get_map_map_t& parts) {
    std::vector<Modifiers> modifiers(std::size_t(reply->maxKeyCode - reply->minKeyCode) + 1);
    auto key = xcb_xkb_get_map_map_modmap_rtrn_iterator(reply, &parts);
    for (; key.rem > 0; xcb_xkb_key_mod_map_next(&key)) {
        modifiers.at(key.data->keycode - reply->minKeyCode) = key.data->mods;
    }
    return modifiers;
}

/// The list of key entries as a SetMap request carries it.
class EntryBuffer {
  public:
    void append(const KeyEntry& key) {
        xcb_xkb_key_sym_map_t head{};
        std::copy(key.types.begin(), key.types.end(), std::begin(head.kt_index));
        head.groupInfo = key.groupInfo;
        head.width = key.width;
        head.nSyms = static_cast<std::uint16_t>(key.symbols.size());
        appendBytes(std::as_bytes(std::span(&head, 1)));
        appendBytes(std::as_bytes(std::span(key.symbols)));
        symbols_ += head.nSyms;
    }
    std::uint16_t symbolCount() const { return static_cast<std::uint16_t>(symbols_); }
    const void* data() const { return bytes_.data(); }

  private:
    void appendBytes(std::span<const std::byte> bytes) {
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }

    std::vector<std::byte> bytes_;
    std::size_t symbols_ = 0;
};

}  // namespace

KeyEntry KeyEntry::twoLevel(KeySymbol plain, KeySymbol shifted) {
    return {{twoLevelType, 0, 0, 0}, 1, 2, {plain, shifted}};
}

std::uint8_t KeyType::level(Modifiers modifiers) const {
    const auto found = std::ranges::find(choices, modifiers & mask, &Choice::modifiers);
    return found == choices.end() ? std::uint8_t{0} : found->level;
}

KeyMap::KeyMap(xcb_keycode_t first, std::vector<KeyEntry> keys, std::vector<KeyType> types,
               std::vector<Modifiers> modifiers)
    : first_(first), keys_(std::move(keys)), types_(std::move(types)), modifiers_(std::move(modifiers)) {}

std::optional<KeyMap> KeyMap::read(xcb_connection_t* connection) {
    constexpr std::uint16_t wanted =
        XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    const auto cookie = xcb_xkb_get_map(connection, XCB_XKB_ID_USE_CORE_KBD, wanted, 0, 0, 0, 0, 0, 0, 0, 0,
                                        0, 0, 0, 0, 0, 0, 0, 0);
    const auto reply = owned(xcb_xkb_get_map_reply(connection, cookie, nullptr));
    if (!reply) return std::nullopt;
    xcb_xkb_get_map_map_t parts{};
    xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                               reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                               reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                               reply->totalVModMapKeys, reply->present, &parts);
    return KeyMap(reply->minKeyCode, readKeys(reply.get(), parts), readTypes(reply.get(), parts),
                  readModifiers(reply.get(), parts));
}

void KeyMap::write(xcb_connection_t* connection, xcb_keycode_t from, xcb_keycode_t to) const {
    EntryBuffer entries;
    for (std::size_t code = from; code <= to; ++code) entries.append(entry(static_cast<xcb_keycode_t>(code)));
    const auto count = static_cast<std::uint8_t>(to - from + 1);
    xcb_xkb_set_map(connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0, first(), last(), 0, 0,
                    from, count, entries.symbolCount(), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                    entries.data());
}

KeySymbol KeyMap::symbol(xcb_keycode_t code, std::uint8_t group, Modifiers modifiers) const {
    const KeyEntry& key = entry(code);
    if ((key.groupInfo & groupCountMask) == 0) return XKB_KEY_NoSymbol;
    const std::size_t used = usedGroup(key, group);
    const std::size_t type = key.types.at(used);
    const std::size_t level = type < types_.size() ? types_[type].level(modifiers) : 0;
    const std::size_t place = used * key.width + level;
    return level < key.width && place < key.symbols.size() ? key.symbols[place] : XKB_KEY_NoSymbol;
}

Modifiers KeyMap::modifiersOf(KeySymbol symbol) const {
    Modifiers all = 0;
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        if (std::ranges::find(keys_[i].symbols, symbol) != keys_[i].symbols.end()) all |= modifiers_[i];
    }
    return all;
}

bool KeyMap::isSpare(xcb_keycode_t code) const {
    return modifiers(code) == 0 &&
           std::ranges::all_of(entry(code).symbols, [](KeySymbol s) { return s == XKB_KEY_NoSymbol; });
}

}  // namespace parlivo::x11
