// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/HotKeyEdges.h"

#include <utility>

namespace parlivo {

class HotKeyEdges::Handler : public HotKeyHandler {
  public:
    explicit Handler(HotKeyEdges& edges) : edges_(edges) {}
    ~Handler() override {
        edges_.pressed_ = nullptr;
        edges_.released_ = nullptr;
        edges_.changed_ = nullptr;
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

  private:
    HotKeyEdges& edges_;
};

std::unique_ptr<HotKeyHandler> HotKeyEdges::install(HotKeyService::Edge pressed, HotKeyService::Edge released,
                                                    HotKeyService::Change changed) {
    pressed_ = std::move(pressed);
    released_ = std::move(released);
    changed_ = std::move(changed);
    return std::make_unique<Handler>(*this);
}

// The callbacks may replace themselves; the copies live on.

void HotKeyEdges::press() {
    if (std::exchange(held_, true)) return;
    if (const HotKeyService::Edge pressed = pressed_) pressed();
}

void HotKeyEdges::release() {
    if (!std::exchange(held_, false)) return;
    if (const HotKeyService::Edge released = released_) released();
}

void HotKeyEdges::tell(const std::optional<HotKeyRefusal>& change) const {
    if (const HotKeyService::Change changed = changed_) changed(change);
}

}  // namespace parlivo
