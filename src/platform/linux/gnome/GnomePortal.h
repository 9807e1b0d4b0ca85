// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/portal/PortalHotKeyService.h"

namespace parlivo::gnome {

/// Whether this GNOME gives programs hot keys by the portal (48 and later).
bool hasPortalKeys();

/// What the portal does not tell of GNOME.
portal::PortalDesktop portalDesktop();

}  // namespace parlivo::gnome
