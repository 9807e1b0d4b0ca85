// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/desktop/Desktop.h"

#include <memory>

namespace parlivo {

/// The desktop of the session that this process runs in. The variable PARLIVO_PLATFORM ("x11", "wayland" or
/// "none") overrides what the display servers tell.
std::unique_ptr<Desktop> makeDesktop();

}  // namespace parlivo
