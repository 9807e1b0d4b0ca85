// SPDX-License-Identifier: MIT
#pragma once

#include "platform/StatusItemHost.h"

namespace parlivo {

/// Knows whether there is a tray of the display server's, and in which colour it draws. Main thread.
class TrayWatch {
  public:
    virtual ~TrayWatch() = default;

    virtual bool present() const = 0;
    virtual StatusItemPlace::Foreground foreground() const = 0;
};

}  // namespace parlivo
