// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/FakeInput.h"

#include <fake-input-client.h>

namespace parlivo::wayland {

namespace {

/// The first version with keys.
constexpr std::uint32_t withKeys = 4;

}  // namespace

bool FakeInput::isOffered(WaylandConnection& connection) {
    return connection.offers(org_kde_kwin_fake_input_interface);
}

FakeInput::~FakeInput() {
    const auto destroyAll = [this] {
        if (handle_) org_kde_kwin_fake_input_destroy(handle_);
    };
    // A broken connection has no thread any more that could use the objects.
    if (!connection_.run(destroyAll)) destroyAll();
}

bool FakeInput::ensureStarted() {
    if (handle_) return true;
    handle_ = connection_.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface, withKeys);
    if (!handle_ || org_kde_kwin_fake_input_get_version(handle_) < withKeys) return false;
    org_kde_kwin_fake_input_authenticate(handle_, "Parlivo", "incolla il testo dettato");
    return true;
}

bool FakeInput::press(std::span<const std::uint32_t> keys) {
    bool sent = false;
    connection_.run([&] {
        if (!ensureStarted()) return;
        for (const auto key : keys) send(key, Edge::Press);
        for (auto i = keys.size(); i-- > 0;) send(keys[i], Edge::Release);
        sent = connection_.roundTrip();
    });
    return sent;
}

bool FakeInput::move(std::uint32_t key, Edge edge) {
    bool sent = false;
    connection_.run([&] {
        if (!ensureStarted()) return;
        send(key, edge);
        sent = connection_.roundTrip();
    });
    return sent;
}

void FakeInput::send(std::uint32_t key, Edge edge) {
    org_kde_kwin_fake_input_keyboard_key(
        handle_, key, edge == Edge::Press ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

}  // namespace parlivo::wayland
