// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/NullDesktop.h"

#include <cerrno>

namespace parlivo {

std::unique_ptr<HotKeyHandler> NullHotKeyService::installHandler(Edge, Edge, Change) {
    return std::make_unique<HotKeyHandler>();
}

HotKeyService::Result NullHotKeyService::registerHotKey(KeyCode, HotKeyModifiers, HotKeyIdentity) {
    return HotKeyRefusal{ENOTSUP};
}

}  // namespace parlivo
