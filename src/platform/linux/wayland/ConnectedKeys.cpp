// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/ConnectedKeys.h"

#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/VirtualKeyboard.h"

namespace parlivo::wayland {

std::unique_ptr<ChordKeys> ConnectedKeys::on(WaylandConnection& connection) {
    if (VirtualKeyboard::isOffered(connection)) return std::make_unique<VirtualKeyboard>(connection);
    if (FakeInput::isOffered(connection)) return std::make_unique<FakeInput>(connection);
    return nullptr;
}

std::unique_ptr<ConnectedKeys> ConnectedKeys::open() {
    auto connection = WaylandConnection::open();
    auto keys = connection ? on(*connection) : nullptr;
    if (!keys) return nullptr;
    return std::unique_ptr<ConnectedKeys>(new ConnectedKeys(std::move(connection), std::move(keys)));
}

}  // namespace parlivo::wayland
