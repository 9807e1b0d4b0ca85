// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

namespace parlivo::wayland {

/// Positions on the keyboard, as the kernel counts them (linux/input-event-codes.h).
namespace EvdevKey {
inline constexpr std::uint32_t leftShift = 42;
inline constexpr std::uint32_t insert = 110;
}  // namespace EvdevKey

/// A way to press keys by their position. Any thread but the connection's.
class ChordKeys {
  public:
    virtual ~ChordKeys() = default;

    /// Makes ready what the first chord would otherwise wait for. Never necessary.
    virtual void prepare() {}

    /// Presses the keys in this order and releases them in the opposite one. False if they could not be sent.
    virtual bool press(std::span<const std::uint32_t> keys) = 0;

    enum class Edge { Release, Press };
    /// Moves one key. False if it could not be sent.
    virtual bool move(std::uint32_t key, Edge edge) = 0;
};

}  // namespace parlivo::wayland
