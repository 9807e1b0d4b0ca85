// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Screens.h"

namespace parlivo {

/// The screens as the window server sees them.
class MacScreens : public Screens {
  public:
    std::optional<QRect> mainVisibleFrame() override;
    bool transparencyAvailable() override { return true; }
};

}  // namespace parlivo
