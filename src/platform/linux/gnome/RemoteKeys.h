// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/gnome/RemoteDesktop.h"
#include "platform/linux/wayland/ChordKeys.h"

#include <memory>
#include <utility>
#include <vector>

namespace parlivo::gnome {

/// Keys that GNOME's compositor presses for us.
class RemoteKeys : public wayland::ChordKeys {
  public:
    explicit RemoteKeys(std::shared_ptr<RemoteDesktop> desktop) : desktop_(std::move(desktop)) {}

    bool press(std::span<const std::uint32_t> keys) override {
        std::vector<RemoteDesktop::KeyMove> moves;
        for (const auto key : keys) moves.push_back({key, RemoteDesktop::KeyState::Down});
        for (auto i = keys.size(); i-- > 0;) moves.push_back({keys[i], RemoteDesktop::KeyState::Up});
        return desktop_->moveKeys(moves);
    }
    bool move(std::uint32_t key, Edge edge) override {
        return desktop_->moveKeys(
            {{key, edge == Edge::Press ? RemoteDesktop::KeyState::Down : RemoteDesktop::KeyState::Up}});
    }

  private:
    const std::shared_ptr<RemoteDesktop> desktop_;
};

}  // namespace parlivo::gnome
