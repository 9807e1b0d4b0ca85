// SPDX-License-Identifier: MIT
#pragma once

#include "platform/LoginItem.h"

namespace parlivo {

/// The main application as a login item of the system's service management.
class MacLoginItem : public LoginItem {
  public:
    bool isEnabled() override;
    void setEnabled(bool enabled) override;
};

}  // namespace parlivo
