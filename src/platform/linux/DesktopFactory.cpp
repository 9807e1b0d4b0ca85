// SPDX-License-Identifier: MIT
#include "platform/linux/DesktopFactory.h"

#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/session/SessionKind.h"
#include "platform/linux/wayland/WaylandDesktop.h"
#include "platform/linux/x11/X11Desktop.h"

namespace parlivo {

std::unique_ptr<Desktop> makeDesktop() {
    const SessionChoice session = currentSession();
    switch (session.kind) {
        case SessionKind::X11:
            return std::make_unique<X11Desktop>();
        case SessionKind::Wayland:
            return std::make_unique<WaylandDesktop>();
        case SessionKind::None:
            break;
    }
    return std::make_unique<NullDesktop>(session.reason);
}

}  // namespace parlivo
