// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/NoOpKey.h"

#include "platform/linux/wayland/ConnectedKeys.h"

namespace parlivo::wayland {

std::unique_ptr<NoOpKey> NoOpKey::make() {
    auto keys = ConnectedKeys::open();
    if (!keys) return nullptr;
    keys->prepare();
    return std::unique_ptr<NoOpKey>(new NoOpKey(std::move(keys)));
}

}  // namespace parlivo::wayland
