// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemVersion.h"

namespace parlivo {

/// The system's own words, which have the form that the port states.
class MacSystemVersion : public SystemVersion {
  public:
    QString description() override;
};

}  // namespace parlivo
