// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Directories.h"

namespace parlivo {

/// The folders of the user's Library, the home folder, and the user's own temporary folder.
class MacDirectories : public Directories {
  public:
    QString applicationSupport() const override;
    QString logs() const override;
    QString home() const override;
    QString temporary() const override;
};

}  // namespace parlivo
