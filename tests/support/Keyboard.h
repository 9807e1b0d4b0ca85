// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/x11/XcbHandles.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <set>

namespace parlivo::desktop {

/// X key codes of positions on a PC keyboard (evdev's code + 8).
namespace Key {
inline constexpr xcb_keycode_t backspace = 22;
inline constexpr xcb_keycode_t returnKey = 36;
inline constexpr xcb_keycode_t leftControl = 37;
inline constexpr xcb_keycode_t a = 38;
inline constexpr xcb_keycode_t grave = 49;
inline constexpr xcb_keycode_t leftShift = 50;
inline constexpr xcb_keycode_t v = 55;
inline constexpr xcb_keycode_t leftAlt = 64;
inline constexpr xcb_keycode_t space = 65;
inline constexpr xcb_keycode_t capsLock = 66;
inline constexpr xcb_keycode_t numLock = 77;
inline constexpr xcb_keycode_t rightShift = 62;
inline constexpr xcb_keycode_t rightControl = 105;
inline constexpr xcb_keycode_t rightAlt = 108;
inline constexpr xcb_keycode_t leftSuper = 133;
}  // namespace Key

/// The user's keyboard: presses keys on the display named by DISPLAY. Returns from each operation when the X
/// server has done it. Throws Error when there is no such display or device.
class Keyboard {
  public:
    enum class Device {
        Synthetic,  ///< XTEST's own keyboard, which xdotool and typing programs use
        Physical,   ///< the machine's keyboard: held keys repeat, held modifiers count as the user's
    };

    explicit Keyboard(Device device = Device::Physical);
    /// Releases all keys and locks that it still holds.
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    void press(xcb_keycode_t key);
    void release(xcb_keycode_t key);
    void tap(xcb_keycode_t key);

    /// The first key that gives this keysym in the present layout, in any level.
    xcb_keycode_t keyOf(xcb_keysym_t keysym) const;

    /// Locks exactly these core modifiers (XCB_MOD_MASK_LOCK is Caps Lock, XCB_MOD_MASK_2 Num Lock).
    void setLocks(std::uint16_t modifiers);
    std::uint16_t locks() const;

    /// Makes a group of the layout the current one.
    void setGroup(std::uint8_t group);

    /// When a held key begins to repeat, and how often it does.
    void setRepeat(std::chrono::milliseconds delay, std::chrono::milliseconds interval);

    /// Whether the display counts the key as down, whoever presses it.
    bool isDown(xcb_keycode_t key) const;

    /// Loads a layout by its XKB name ("us", "it", "de", or several with commas).
    static void setLayout(const QByteArray& layout);

  private:
    void send(std::uint8_t type, xcb_keycode_t key);
    void sync() const;
    void findPhysicalDevice();

    x11::ConnectionHandle connection_;
    std::uint8_t firstType_ = 0;  ///< added to 0 and 1 for press and release
    std::uint8_t deviceId_ = 0;
    std::set<xcb_keycode_t> held_;
    bool locked_ = false;
};

}  // namespace parlivo::desktop
