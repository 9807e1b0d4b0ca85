// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/ChordKeys.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <QByteArray>

#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <string>

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace parlivo::wayland {

/// A keyboard beside the user's, whose keys go to the focused window (zwp_virtual_keyboard_v1).
///
/// It comes into being with its first key or with `prepare`, and stays: a window that meets the seat's
/// keyboard for the first time loses the key that comes with it. The keymap is a complete one, because GTK
/// ignores keyboards that lack common keys; the layout changes nothing for keys such as Insert.
class VirtualKeyboard : public ChordKeys {
  public:
    static constexpr const char* usualLayout = "us";

    /// `layout` as XKB names it. The connection must outlive this.
    explicit VirtualKeyboard(WaylandConnection& connection, std::string layout = usualLayout);
    ~VirtualKeyboard() override;
    VirtualKeyboard(const VirtualKeyboard&) = delete;
    VirtualKeyboard& operator=(const VirtualKeyboard&) = delete;

    /// Whether the compositor lets programs have one.
    static bool isOffered(WaylandConnection& connection);

    /// The keymap that the compositor is given for a layout; empty if it cannot be made.
    static QByteArray keymapText(const std::string& layout = usualLayout);

    void prepare() override;
    bool press(std::span<const std::uint32_t> keys) override;
    bool move(std::uint32_t key, Edge edge) override;

  private:
    struct Unref {
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
        void operator()(xkb_state* state) const { xkb_state_unref(state); }
    };

    // On the connection's thread.
    bool ensureKeyboard();
    bool sendKeymap();
    void send(std::uint32_t key, Edge edge);

    WaylandConnection& connection_;
    const std::string layout_;
    std::unique_ptr<xkb_keymap, Unref> keymap_;
    std::unique_ptr<xkb_state, Unref> state_;
    zwp_virtual_keyboard_manager_v1* manager_ = nullptr;
    zwp_virtual_keyboard_v1* keyboard_ = nullptr;
};

}  // namespace parlivo::wayland
