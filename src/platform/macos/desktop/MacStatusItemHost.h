// SPDX-License-Identifier: MIT
#pragma once

#include "platform/StatusItemHost.h"

namespace parlivo {

/// The menu bar, which is always there and colours template images itself, as it does the titles of menus.
class MacStatusItemHost : public StatusItemHost {
  public:
    void watch(Observer observer) override {
        if (!observer) return;
        observer(StatusItemPlace{StatusItemPlace::Foreground::Template, StatusItemPlace::Menus::Native});
    }
    StatusItemPlace::Foreground foregroundAt(const QRect&) override {
        return StatusItemPlace::Foreground::Unknown;
    }
};

}  // namespace parlivo
