// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Screens.h"

namespace parlivo {

/// The screens of an X server with a window manager, over the toolkit's own connection. Where the toolkit
/// does not run on X, what it knows by itself.
class X11Screens : public Screens {
  public:
    std::optional<QRect> mainVisibleFrame() override;
    bool transparencyAvailable() override;
};

}  // namespace parlivo
