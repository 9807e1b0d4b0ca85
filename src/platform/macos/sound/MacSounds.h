// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Sounds.h"

namespace parlivo {

/// The system's own sounds.
class MacSounds : public Sounds {
  public:
    void play(const QString& name) override;
};

}  // namespace parlivo
