// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/VirtualKeyboard.h"

#include "platform/linux/wayland/SharedMemory.h"

#include <virtual-keyboard-client.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace parlivo::wayland {

namespace {

struct UnrefContext {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
};
struct Free {
    void operator()(char* text) const { std::free(text); }
};

/// Wayland counts the keys of a keymap from 8 on, the kernel from 0.
constexpr std::uint32_t keymapOffset = 8;

std::uint32_t milliseconds() {
    using namespace std::chrono;
    const auto sinceStart = steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(duration_cast<std::chrono::milliseconds>(sinceStart).count());
}

xkb_keymap* compileKeymap(const std::string& layout) {
    const std::unique_ptr<xkb_context, UnrefContext> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!context) return nullptr;
    xkb_rule_names names{};
    names.rules = "evdev";
    names.model = "pc105";
    names.layout = layout.c_str();
    return xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
}

/// Empty if it cannot be written.
QByteArray textOf(xkb_keymap* keymap) {
    const std::unique_ptr<char, Free> text(xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1));
    return {text.get()};
}

}  // namespace

bool VirtualKeyboard::isOffered(WaylandConnection& connection) {
    return connection.offers(zwp_virtual_keyboard_manager_v1_interface);
}

VirtualKeyboard::VirtualKeyboard(WaylandConnection& connection, std::string layout)
    : connection_(connection), layout_(std::move(layout)) {}

VirtualKeyboard::~VirtualKeyboard() {
    const auto destroyAll = [this] {
        if (keyboard_) zwp_virtual_keyboard_v1_destroy(keyboard_);
        if (manager_) zwp_virtual_keyboard_manager_v1_destroy(manager_);
    };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_.run(destroyAll)) destroyAll();
}

void VirtualKeyboard::prepare() {
    connection_.run([this] { ensureKeyboard(); });
}

bool VirtualKeyboard::press(std::span<const std::uint32_t> keys) {
    bool sent = false;
    connection_.run([&] {
        if (!ensureKeyboard()) return;
        for (const auto key : keys) send(key, Edge::Press);
        for (auto i = keys.size(); i-- > 0;) send(keys[i], Edge::Release);
        sent = connection_.roundTrip();
    });
    return sent;
}

bool VirtualKeyboard::move(std::uint32_t key, Edge edge) {
    bool sent = false;
    connection_.run([&] {
        if (!ensureKeyboard()) return;
        send(key, edge);
        sent = connection_.roundTrip();
    });
    return sent;
}

bool VirtualKeyboard::ensureKeyboard() {
    if (keyboard_) return true;
    if (!keymap_) keymap_.reset(compileKeymap(layout_));
    if (!keymap_) return false;
    state_.reset(xkb_state_new(keymap_.get()));
    auto* const seat = connection_.bind<wl_seat>(wl_seat_interface, 1);
    if (!manager_) {
        manager_ =
            connection_.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1);
    }
    if (seat && manager_) keyboard_ = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager_, seat);
    if (seat) wl_seat_destroy(seat);
    return keyboard_ && sendKeymap() && connection_.roundTrip();
}

QByteArray VirtualKeyboard::keymapText(const std::string& layout) {
    const std::unique_ptr<xkb_keymap, Unref> keymap(compileKeymap(layout));
    return keymap ? textOf(keymap.get()) : QByteArray();
}

bool VirtualKeyboard::sendKeymap() {
    const QByteArray text = textOf(keymap_.get());
    if (text.isEmpty()) return false;
    const auto size = static_cast<std::size_t>(text.size()) + 1;  // with the zero at its end
    const auto memory = SharedMemory::make(size);
    if (!memory) return false;
    std::ranges::copy(std::as_bytes(std::span(text.constData(), size)), memory->bytes().begin());
    zwp_virtual_keyboard_v1_keymap(keyboard_, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, memory->descriptor(),
                                   static_cast<std::uint32_t>(size));
    return true;
}

/// The compositor does not work out the modifiers of such a keyboard itself.
void VirtualKeyboard::send(std::uint32_t key, Edge edge) {
    const bool pressed = edge == Edge::Press;
    zwp_virtual_keyboard_v1_key(keyboard_, milliseconds(), key,
                                pressed ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    const auto changed =
        xkb_state_update_key(state_.get(), key + keymapOffset, pressed ? XKB_KEY_DOWN : XKB_KEY_UP);
    if (changed == 0) return;
    zwp_virtual_keyboard_v1_modifiers(keyboard_,
                                      xkb_state_serialize_mods(state_.get(), XKB_STATE_MODS_DEPRESSED),
                                      xkb_state_serialize_mods(state_.get(), XKB_STATE_MODS_LATCHED),
                                      xkb_state_serialize_mods(state_.get(), XKB_STATE_MODS_LOCKED),
                                      xkb_state_serialize_layout(state_.get(), XKB_STATE_LAYOUT_EFFECTIVE));
}

}  // namespace parlivo::wayland
