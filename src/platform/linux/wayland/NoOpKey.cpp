// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/NoOpKey.h"

#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/VirtualKeyboard.h"

namespace parlivo::wayland {

std::unique_ptr<NoOpKey> NoOpKey::make() {
    auto connection = WaylandConnection::open();
    if (!connection) return nullptr;
    std::unique_ptr<ChordKeys> keys;
    if (VirtualKeyboard::isOffered(*connection))
        keys = std::make_unique<VirtualKeyboard>(*connection);
    else if (FakeInput::isOffered(*connection))
        keys = std::make_unique<FakeInput>(*connection);
    if (!keys) return nullptr;
    keys->prepare();
    return std::unique_ptr<NoOpKey>(new NoOpKey(std::move(connection), std::move(keys)));
}

}  // namespace parlivo::wayland
