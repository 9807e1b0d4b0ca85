// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/ChordKeys.h"

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

namespace parlivo::wayland {

/// A key that enters nothing and means nothing, to let the focused window know that a key was pressed. On a
/// connection of its own, so that nothing else keeps it waiting.
class NoOpKey {
  public:
    /// Null if the compositor lets programs press no keys.
    static std::unique_ptr<NoOpKey> make();

    /// Presses and releases it. False if the compositor is gone. Any thread; about a millisecond.
    bool tap() { return keys_->press(noKey); }
    /// One edge of it. As tap().
    bool move(ChordKeys::Edge edge) { return keys_->move(noKey.front(), edge); }

  private:
    /// The kernel gives its code 0 (KEY_RESERVED) to no key.
    static constexpr std::array<std::uint32_t, 1> noKey{0};

    explicit NoOpKey(std::unique_ptr<ChordKeys> keys) : keys_(std::move(keys)) {}

    std::unique_ptr<ChordKeys> keys_;
};

}  // namespace parlivo::wayland
