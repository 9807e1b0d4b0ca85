// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/SeatKeymap.h"

#include "platform/linux/wayland/VirtualKeyboard.h"
#include "platform/linux/x11/KeyLabel.h"

#include <sys/mman.h>

#include <array>
#include <cstdlib>
#include <utility>

namespace parlivo::wayland {

namespace {

/// Wayland counts the keys of a keymap from 8 on, the kernel from 0.
constexpr std::uint32_t keymapOffset = 8;

}  // namespace

std::unique_ptr<SeatKeymap> SeatKeymap::open() {
    auto connection = WaylandConnection::open();
    if (!connection) return nullptr;
    std::unique_ptr<SeatKeymap> keymap(new SeatKeymap(std::move(connection)));
    keymap->connection_->run([&keymap] { keymap->start(); });
    return keymap;
}

SeatKeymap::SeatKeymap(std::unique_ptr<WaylandConnection> connection)
    : connection_(std::move(connection)),
      context_(xkb_context_new(XKB_CONTEXT_NO_FLAGS)),
      own_(textOf(compile(VirtualKeyboard::keymapText()).get())) {}

SeatKeymap::~SeatKeymap() {
    const auto destroyAll = [this] {
        if (keyboard_) wl_keyboard_destroy(keyboard_);
        if (seat_) wl_seat_destroy(seat_);
    };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_->run(destroyAll)) destroyAll();
}

void SeatKeymap::start() {
    // A user's keymap may be the same, and is then passed over, too.
    keymap_ = compile(own_);
    seat_ = connection_->bind<wl_seat>(wl_seat_interface, 1);
    if (!seat_) return;
    static const wl_seat_listener listener{
        .capabilities =
            [](void* data, wl_seat*, std::uint32_t capabilities) {
                static_cast<SeatKeymap*>(data)->takeCapabilities(capabilities);
            },
        .name = [](void*, wl_seat*, const char*) {},
    };
    wl_seat_add_listener(seat_, &listener, this);
    // The first answer has the capabilities, the second one the keymap.
    if (connection_->roundTrip()) connection_->roundTrip();
}

/// A seat without a keyboard ends the connection of a client that asks for one.
void SeatKeymap::takeCapabilities(std::uint32_t capabilities) {
    if (keyboard_ || (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) == 0) return;
    static const wl_keyboard_listener listener{
        .keymap =
            [](void* data, wl_keyboard*, std::uint32_t format, std::int32_t memory, std::uint32_t size) {
                static_cast<SeatKeymap*>(data)->takeKeymap(format, UniqueFd(memory), size);
            },
        .enter = [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
        .leave = [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
        .key = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
        .modifiers = [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        std::uint32_t) {},
        .repeat_info = [](void*, wl_keyboard*, std::int32_t, std::int32_t) {},
    };
    keyboard_ = wl_seat_get_keyboard(seat_);
    wl_keyboard_add_listener(keyboard_, &listener, this);
}

void SeatKeymap::takeKeymap(std::uint32_t format, UniqueFd memory, std::uint32_t size) {
    if (format != WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 || size == 0) return;
    void* const place = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, memory.get(), 0);
    if (place == MAP_FAILED) return;
    // With a zero at its end, as Wayland's protocol says.
    const QByteArray text(static_cast<const char*>(place), static_cast<qsizetype>(size) - 1);
    munmap(place, size);
    auto keymap = compile(text);
    // Some compositors hand a keymap on as it was sent, others as they write it themselves (sway 1.10).
    if (!keymap || textOf(keymap.get()) != own_) keymap_ = std::move(keymap);
}

std::unique_ptr<xkb_keymap, SeatKeymap::Unref> SeatKeymap::compile(const QByteArray& text) const {
    if (!context_ || text.isEmpty()) return nullptr;
    return std::unique_ptr<xkb_keymap, Unref>(xkb_keymap_new_from_string(
        context_.get(), text.constData(), XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

QByteArray SeatKeymap::textOf(xkb_keymap* keymap) {
    if (!keymap) return {};
    const std::unique_ptr<char, decltype(&std::free)> text(
        xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1), &std::free);
    return {text.get()};
}

xkb_keysym_t SeatKeymap::symbol(std::uint32_t kernelCode) {
    xkb_keysym_t found = XKB_KEY_NoSymbol;
    connection_->run([&] {
        const xkb_keysym_t* symbols = nullptr;
        const int count = keymap_ ? xkb_keymap_key_get_syms_by_level(keymap_.get(), kernelCode + keymapOffset,
                                                                     0, 0, &symbols)
                                  : 0;
        if (count == 1) found = *symbols;
    });
    return found;
}

QString SeatKeymap::symbolName(std::uint32_t kernelCode) {
    const auto wanted = symbol(kernelCode);
    std::array<char, 64> name{};
    if (wanted == XKB_KEY_NoSymbol || xkb_keysym_get_name(wanted, name.data(), name.size()) <= 0) return {};
    return QString::fromLatin1(name.data());
}

char32_t SeatKeymap::character(std::uint32_t kernelCode) {
    return xkb_keysym_to_utf32(symbol(kernelCode));
}

QString SeatKeymap::label(std::uint32_t kernelCode) {
    return x11::keyLabel(symbol(kernelCode));
}

}  // namespace parlivo::wayland
