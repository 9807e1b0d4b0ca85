// SPDX-License-Identifier: MIT
#include "support/Keyboard.h"

#include "platform/linux/x11/XcbXkb.h"
#include "support/Error.h"
#include "support/XServer.h"

#include <QProcess>
#include <QString>

#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace parlivo::desktop {

namespace {

using x11::owned;

[[noreturn]] void fail(const char* what) {
    throw Error(QStringLiteral("desktop test"), 1, QString::fromLatin1(what));
}

/// A real keyboard is a slave that is not XTEST's; its events come with the types of its own extension.
bool isPhysicalKeyboard(const xcb_input_xi_device_info_t& info) {
    if (info.type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) return false;
    const std::string_view name(xcb_input_xi_device_info_name(&info),
                                static_cast<std::size_t>(xcb_input_xi_device_info_name_length(&info)));
    return name.find("XTEST") == std::string_view::npos;
}

}  // namespace

Keyboard::Keyboard(Device device) : connection_(xcb_connect(nullptr, nullptr)) {
    auto* const c = connection_.get();
    if (xcb_connection_has_error(c) != 0) fail("no display");
    if (!owned(xcb_test_get_version_reply(c, xcb_test_get_version(c, 2, 2), nullptr))) fail("no XTEST");
    if (!x11::startKeyboardExtension(c)) fail("no XKB");
    if (device == Device::Physical) {
        findPhysicalDevice();
    } else {
        firstType_ = XCB_KEY_PRESS;
    }
}

void Keyboard::findPhysicalDevice() {
    auto* const c = connection_.get();
    const auto version =
        owned(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    if (!version) fail("no input extension");
    const auto devices = owned(
        xcb_input_xi_query_device_reply(c, xcb_input_xi_query_device(c, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!devices) fail("no list of devices");
    for (auto i = xcb_input_xi_query_device_infos_iterator(devices.get()); i.rem > 0;
         xcb_input_xi_device_info_next(&i)) {
        if (isPhysicalKeyboard(*i.data)) deviceId_ = static_cast<std::uint8_t>(i.data->deviceid);
    }
    if (deviceId_ == 0) fail("no keyboard but XTEST's");
    firstType_ = static_cast<std::uint8_t>(xcb_get_extension_data(c, &xcb_input_id)->first_event +
                                           XCB_INPUT_DEVICE_KEY_PRESS);
}

Keyboard::~Keyboard() {
    for (const auto key : std::set(held_)) release(key);
    if (locked_) setLocks(0);
}

void Keyboard::press(xcb_keycode_t key) {
    send(0, key);
    held_.insert(key);
}

void Keyboard::release(xcb_keycode_t key) {
    send(1, key);
    held_.erase(key);
}

void Keyboard::tap(xcb_keycode_t key) {
    press(key);
    release(key);
}

void Keyboard::send(std::uint8_t type, xcb_keycode_t key) {
    xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(firstType_ + type), key,
                        XCB_CURRENT_TIME, XCB_NONE, 0, 0, deviceId_);
    sync();
}

void Keyboard::sync() const {
    waitForServer(connection_.get());
}

xcb_keycode_t Keyboard::keyOf(xcb_keysym_t keysym) const {
    auto* const c = connection_.get();
    const auto* const setup = xcb_get_setup(c);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto map = owned(
        xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, setup->min_keycode, count), nullptr));
    if (!map) fail("no keyboard map");
    const std::span keysyms(xcb_get_keyboard_mapping_keysyms(map.get()),
                            static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(map.get())));
    const auto found = std::find(keysyms.begin(), keysyms.end(), keysym);
    if (found == keysyms.end()) fail("this layout has no key for a keysym");
    return static_cast<xcb_keycode_t>(setup->min_keycode +
                                      (found - keysyms.begin()) / map->keysyms_per_keycode);
}

void Keyboard::setLocks(std::uint16_t modifiers) {
    locked_ = modifiers != 0;
    xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, 0xff,
                             static_cast<std::uint8_t>(modifiers), 0, 0, 0, 0, 0);
    sync();
}

std::uint16_t Keyboard::locks() const {
    auto* const c = connection_.get();
    const auto state =
        owned(xcb_xkb_get_state_reply(c, xcb_xkb_get_state(c, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    return state ? state->lockedMods : std::uint16_t{0};
}

void Keyboard::setGroup(std::uint8_t group) {
    xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
    sync();
}

void Keyboard::setRepeat(std::chrono::milliseconds delay, std::chrono::milliseconds interval) {
    const QStringList arguments{QStringLiteral("r"), QStringLiteral("rate"), QString::number(delay.count()),
                                QString::number(1000 / interval.count())};
    if (QProcess::execute(QStringLiteral("xset"), arguments) != 0) fail("xset failed");
}

bool Keyboard::isDown(xcb_keycode_t key) const {
    auto* const c = connection_.get();
    const auto map = owned(xcb_query_keymap_reply(c, xcb_query_keymap(c), nullptr));
    return map && (std::span(map->keys)[key / 8U] & (1U << (key % 8U))) != 0;
}

void Keyboard::setLayout(const QByteArray& layout) {
    const QStringList arguments{QStringLiteral("-layout"), QString::fromLatin1(layout)};
    if (QProcess::execute(QStringLiteral("setxkbmap"), arguments) != 0) fail("setxkbmap failed");
}

}  // namespace parlivo::desktop
