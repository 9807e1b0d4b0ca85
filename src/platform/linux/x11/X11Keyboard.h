// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/KeyMap.h"
#include "platform/linux/x11/XcbHandles.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace parlivo::x11 {

/// The core keyboard over an X connection of its own: its map, its state, and keys sent to it as if they were
/// pressed. One thread at a time.
///
/// Requests are sent off by `flush`; questions to the server send off what waits and take one round trip. A
/// broken connection answers with empty values and ignores requests.
class X11Keyboard {
  public:
    struct State {
        /// Modifiers of the keys that are down.
        Modifiers base = 0;
        Modifiers latched = 0;
        Modifiers locked = 0;
        /// The layout in force, 0 to 3.
        std::uint8_t group = 0;
    };
    enum class Press { Down, Up };
    /// Bit n%8 of byte n/8: whether key code n is down.
    using PressedKeys = std::array<std::uint8_t, 32>;

    /// Connects to the display of the environment. Null if there is none or it lacks XTEST or XKB.
    static std::unique_ptr<X11Keyboard> open();

    ~X11Keyboard();
    X11Keyboard(const X11Keyboard&) = delete;
    X11Keyboard& operator=(const X11Keyboard&) = delete;

    bool isConnected() const;

    /// The map as it is now. A change before this call is not reported by `mapChanged` any more.
    std::optional<KeyMap> map();
    /// Gives the keyboard the entries of `map` for the keys from `first` to `last`, all at once.
    void setMap(const KeyMap& map, xcb_keycode_t first, xcb_keycode_t last);
    /// Whether anybody changed the map since it was read. Does not ask the server.
    bool mapChanged();

    State state();
    PressedKeys pressedKeys();
    void press(xcb_keycode_t key, Press press);
    /// Locks or unlocks the modifiers in `affected` as `values` says, and drops all latches.
    void lockModifiers(Modifiers affected, Modifiers values);

    void flush();
    /// Returns when the server has done all that was asked so far.
    void sync();

    /// A list of numbers kept on the root window, which outlives this program. Empty if there is none.
    std::vector<std::uint32_t> rootProperty(std::string_view name);
    /// Sent off together with the next request.
    void setRootProperty(std::string_view name, const std::vector<std::uint32_t>& values);
    void deleteRootProperty(std::string_view name);

    /// Takes the ownership of a selection of this name, which one client of the display at a time can have;
    /// false if another client has it. Ends with the connection.
    bool takeName(std::string_view name);

  private:
    X11Keyboard(ConnectionHandle connection, xcb_window_t root);
    bool start();
    void watchMap();
    void readEvents();
    xcb_atom_t atom(std::string_view name);

    ConnectionHandle connection_;
    xcb_window_t root_;
    std::uint8_t keyboardEvents_ = 0;
    /// The number of the last request before the one that read the map.
    std::uint32_t beforeMap_ = 0;
    bool mapChanged_ = false;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

}  // namespace parlivo::x11
