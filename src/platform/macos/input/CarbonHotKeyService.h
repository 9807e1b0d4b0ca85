// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <memory>
#include <optional>

namespace parlivo {

/// Hot keys of the Carbon event manager: the one interface of macOS that takes a combination from every other
/// application, tells press and release, and needs no permission. The port's key codes and masks are its own.
class CarbonHotKeyService : public HotKeyService {
  public:
    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;

  private:
    class Handler;
    class Registration;

    Handler* handler_ = nullptr;                // the one that is installed, if any
    std::optional<HotKeyIdentity> registered_;  // whose events are ours
};

}  // namespace parlivo
