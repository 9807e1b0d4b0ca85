// SPDX-License-Identifier: MIT
#include "platform/linux/x11/HotKeyEvents.h"

#include "platform/linux/x11/NoOpKey.h"
#include "platform/linux/x11/XcbHandles.h"
#include "platform/linux/x11/XcbQueries.h"
#include "support/MainQueue.h"

#include <sys/socket.h>

#include <utility>

namespace parlivo::x11 {

namespace {

/// Modifiers that do something when they are pressed alone.
constexpr std::uint16_t menuModifiers = XCB_MOD_MASK_1 | XCB_MOD_MASK_4;

/// The highest bit tells that a client sent the event.
constexpr std::uint8_t echoType = XCB_CLIENT_MESSAGE | 0x80;

}  // namespace

HotKeyEvents::HotKeyEvents(xcb_connection_t* connection, xcb_window_t root, Handlers handlers)
    : connection_(connection),
      window_(makeInvisibleWindow(connection, root)),
      handlers_(std::move(handlers)),
      thread_([this] { read(); }) {}

HotKeyEvents::~HotKeyEvents() {
    xcb_flush(connection_);
    ::shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR);
    thread_.join();
}

void HotKeyEvents::askForEcho(std::uint32_t token) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = XCB_ATOM_INTEGER;
    message.data.data32[0] = token;
    xcb_send_event(connection_, 0, window_, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

void HotKeyEvents::read() {
    while (const std::shared_ptr<const xcb_generic_event_t> event =
               EventHandle(xcb_wait_for_event(connection_))) {
        if (const auto key = grabbedKeyOf(connection_, *event)) {
            keepMenusShut(*key);
            cutOff_.follow(connection_, *key);
        }
        MainQueue::async(lifetime_.token(), jobFor(event));
    }
    MainQueue::async(lifetime_.token(), [this] { handlers_.end(); });
}

std::function<void()> HotKeyEvents::jobFor(const std::shared_ptr<const xcb_generic_event_t>& event) const {
    if (event->response_type != echoType) return [this, event] { handlers_.event(*event); };
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
    return [this, token = message.data.data32[0]] { handlers_.echo(token); };
}

/// While the hot key is still held under a core grab, the other key comes back here and does nothing.
void HotKeyEvents::keepMenusShut(const GrabbedKey& key) {
    if (key.key == noOpKey) return;
    if (key.edge == GrabbedKey::Edge::Press) {
        if (!held_) beginHold(key);
        return;
    }
    if (held_ && held_->key == key.key) held_.reset();
    // A single keyboard's state lacks what others hold, and keys of its own have not been shown.
    if (canShowKey_ && (key.keyboard != 0 || (key.state & menuModifiers) != 0)) tapNoOpKey(connection_);
}

void HotKeyEvents::beginHold(const GrabbedKey& key) {
    held_ = key;
    canShowKey_ = noOpKeyAvailable(connection_);
    if (canShowKey_ && key.keyboard != 0) tapNoOpKey(connection_);
}

}  // namespace parlivo::x11
