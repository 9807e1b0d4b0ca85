// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <memory>
#include <optional>

namespace parlivo {

/// Hands the edges of a hot key on, one press and one release for each hold. For services that another
/// program tells of both, and that may repeat or lose some. Main thread.
class HotKeyEdges {
  public:
    HotKeyEdges() = default;
    ~HotKeyEdges() = default;
    HotKeyEdges(const HotKeyEdges&) = delete;
    HotKeyEdges& operator=(const HotKeyEdges&) = delete;

    /// As HotKeyService::installHandler. The handler must not outlive this.
    std::unique_ptr<HotKeyHandler> install(HotKeyService::Edge pressed, HotKeyService::Edge released,
                                           HotKeyService::Change changed);

    bool isHeld() const { return held_; }
    /// Repeats are left out.
    void press();
    /// Ends the hold, if there is one.
    void release();
    /// Tells that the registered hot key does not work any more, or with nullopt that it does again.
    void tell(const std::optional<HotKeyRefusal>& change) const;

  private:
    class Handler;

    HotKeyService::Edge pressed_;
    HotKeyService::Edge released_;
    HotKeyService::Change changed_;
    bool held_ = false;
};

}  // namespace parlivo
