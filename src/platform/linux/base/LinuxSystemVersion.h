// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SystemVersion.h"

namespace parlivo {

/// The distribution's PRETTY_NAME (os-release(5)) and the release of the kernel.
class LinuxSystemVersion : public SystemVersion {
  public:
    QString description() override;
};

}  // namespace parlivo
