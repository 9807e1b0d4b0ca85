// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/ChordKeys.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <memory>
#include <span>
#include <utility>

namespace parlivo::wayland {

/// Keys by whichever protocol the compositor has for them, on a connection of their own: nothing else keeps
/// them waiting, and a leave that was given since counts (a compositor decides it once for each connection).
class ConnectedKeys : public ChordKeys {
  public:
    /// Null if the compositor lets this program press no keys.
    static std::unique_ptr<ConnectedKeys> open();
    /// Keys on a connection that is there already and outlives them. Null as above.
    static std::unique_ptr<ChordKeys> on(WaylandConnection& connection);

    void prepare() override { keys_->prepare(); }
    bool press(std::span<const std::uint32_t> keys) override { return keys_->press(keys); }
    bool move(std::uint32_t key, Edge edge) override { return keys_->move(key, edge); }

  private:
    ConnectedKeys(std::unique_ptr<WaylandConnection> connection, std::unique_ptr<ChordKeys> keys)
        : connection_(std::move(connection)), keys_(std::move(keys)) {}

    std::unique_ptr<WaylandConnection> connection_;
    std::unique_ptr<ChordKeys> keys_;
};

}  // namespace parlivo::wayland
