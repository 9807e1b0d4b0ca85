// SPDX-License-Identifier: MIT
#include "platform/linux/x11/X11Keyboard.h"

#include "platform/linux/x11/XcbQueries.h"
#include "platform/linux/x11/XcbXkb.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <iterator>

namespace parlivo::x11 {

namespace {

constexpr xcb_xkb_device_spec_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;

bool hasTestExtension(xcb_connection_t* connection) {
    const auto* extension = xcb_get_extension_data(connection, &xcb_test_id);
    if (!extension || !extension->present) return false;
    const auto cookie = xcb_test_get_version(connection, XCB_TEST_MAJOR_VERSION, XCB_TEST_MINOR_VERSION);
    return owned(xcb_test_get_version_reply(connection, cookie, nullptr)) != nullptr;
}

}  // namespace

X11Keyboard::X11Keyboard(ConnectionHandle connection, xcb_window_t root)
    : connection_(std::move(connection)), root_(root) {}

X11Keyboard::~X11Keyboard() {
    sync();
}

std::unique_ptr<X11Keyboard> X11Keyboard::open() {
    int screen = 0;
    ConnectionHandle connection(xcb_connect(nullptr, &screen));
    if (xcb_connection_has_error(connection.get())) return nullptr;
    const xcb_window_t root = screenOf(connection.get(), screen)->root;
    std::unique_ptr<X11Keyboard> keyboard(new X11Keyboard(std::move(connection), root));
    if (!keyboard->start()) return nullptr;
    return keyboard;
}

bool X11Keyboard::start() {
    xcb_prefetch_extension_data(connection_.get(), &xcb_test_id);
    xcb_prefetch_extension_data(connection_.get(), &xcb_xkb_id);
    const auto events = startKeyboardExtension(connection_.get());
    if (!events || !hasTestExtension(connection_.get())) return false;
    keyboardEvents_ = *events;
    watchMap();
    return true;
}

void X11Keyboard::watchMap() {
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts =
        XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(connection_.get(), coreKeyboard, events, 0, events, parts, parts, nullptr);
}

bool X11Keyboard::isConnected() const {
    return xcb_connection_has_error(connection_.get()) == 0;
}

std::optional<KeyMap> X11Keyboard::map() {
    beforeMap_ = xcb_no_operation(connection_.get()).sequence;
    mapChanged_ = false;
    return KeyMap::read(connection_.get());
}

void X11Keyboard::setMap(const KeyMap& map, xcb_keycode_t first, xcb_keycode_t last) {
    map.write(connection_.get(), first, last);
}

bool X11Keyboard::mapChanged() {
    readEvents();
    return mapChanged_;
}

void X11Keyboard::readEvents() {
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        if (event->response_type != keyboardEvents_) continue;
        // All events of the keyboard extension share one code; which it is stands in the second byte.
        const bool ofMap = event->pad0 == XCB_XKB_MAP_NOTIFY || event->pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY;
        // An event carries the number of the last request that the server had done before it.
        if (ofMap && event->full_sequence > beforeMap_) mapChanged_ = true;
    }
}

X11Keyboard::State X11Keyboard::state() {
    const auto cookie = xcb_xkb_get_state(connection_.get(), coreKeyboard);
    const auto reply = owned(xcb_xkb_get_state_reply(connection_.get(), cookie, nullptr));
    if (!reply) return {};
    return {reply->baseMods, reply->latchedMods, reply->lockedMods, reply->group};
}

X11Keyboard::PressedKeys X11Keyboard::pressedKeys() {
    const auto cookie = xcb_query_keymap(connection_.get());
    const auto reply = owned(xcb_query_keymap_reply(connection_.get(), cookie, nullptr));
    PressedKeys keys{};
    if (reply) std::copy_n(std::begin(reply->keys), keys.size(), keys.begin());
    return keys;
}

void X11Keyboard::press(xcb_keycode_t key, Press press) {
    const std::uint8_t type = press == Press::Down ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
    xcb_test_fake_input(connection_.get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void X11Keyboard::lockModifiers(Modifiers affected, Modifiers values) {
    constexpr Modifiers allLatches = 0xff;
    xcb_xkb_latch_lock_state(connection_.get(), coreKeyboard, affected, values, 0, 0, allLatches, 0, 0);
}

void X11Keyboard::flush() {
    xcb_flush(connection_.get());
}

void X11Keyboard::sync() {
    const auto cookie = xcb_get_input_focus(connection_.get());
    owned(xcb_get_input_focus_reply(connection_.get(), cookie, nullptr));
}

xcb_atom_t X11Keyboard::atom(std::string_view name) {
    const auto known = atoms_.find(name);
    if (known != atoms_.end()) return known->second;
    const xcb_atom_t atom = internAtom(connection_.get(), name);
    atoms_.emplace(name, atom);
    return atom;
}

std::vector<std::uint32_t> X11Keyboard::rootProperty(std::string_view name) {
    constexpr std::uint32_t longest = 4096;
    const auto cookie =
        xcb_get_property(connection_.get(), 0, root_, atom(name), XCB_ATOM_CARDINAL, 0, longest);
    const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

void X11Keyboard::setRootProperty(std::string_view name, const std::vector<std::uint32_t>& values) {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, root_, atom(name), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
}

void X11Keyboard::deleteRootProperty(std::string_view name) {
    xcb_delete_property(connection_.get(), root_, atom(name));
}

bool X11Keyboard::takeName(std::string_view name) {
    const xcb_atom_t selection = atom(name);
    const auto cookie = xcb_get_selection_owner(connection_.get(), selection);
    const auto reply = owned(xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
    if (!reply || reply->owner != XCB_WINDOW_NONE) return false;
    const xcb_window_t window = makeInvisibleWindow(connection_.get(), root_);
    xcb_set_selection_owner(connection_.get(), window, selection, XCB_CURRENT_TIME);
    return true;
}

}  // namespace parlivo::x11
