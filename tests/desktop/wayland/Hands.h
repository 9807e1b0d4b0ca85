// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/VirtualKeyboard.h"
#include "platform/linux/wayland/WaylandConnection.h"

#include <linux/input-event-codes.h>

#include <cstdint>
#include <initializer_list>
#include <memory>

namespace parlivo::desktop {

/// The user's keyboard. A seat without a screen has none of its own, and windows that meet the first one lose
/// a key; so it lives as long as the test.
class Hands {
  public:
    Hands() : connection_(wayland::WaylandConnection::open()) {
        if (wayland::VirtualKeyboard::isOffered(*connection_))
            keyboard_ = std::make_unique<wayland::VirtualKeyboard>(*connection_, "it");
        else
            keyboard_ = std::make_unique<wayland::FakeInput>(*connection_);
        keyboard_->prepare();
    }

    void press(std::initializer_list<std::uint32_t> keys) {
        for (const auto key : keys) keyboard_->move(key, wayland::ChordKeys::Edge::Press);
    }
    void release(std::initializer_list<std::uint32_t> keys) {
        for (const auto key : keys) keyboard_->move(key, wayland::ChordKeys::Edge::Release);
    }
    void tap(std::uint32_t key) {
        press({key});
        release({key});
    }

  private:
    std::unique_ptr<wayland::WaylandConnection> connection_;
    std::unique_ptr<wayland::ChordKeys> keyboard_;
};

}  // namespace parlivo::desktop
