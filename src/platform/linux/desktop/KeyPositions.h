// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <cstdint>
#include <optional>

/// Positions of keys as the kernel counts them (linux/input-event-codes.h), which every display server passes
/// on: X and Wayland's keymaps add 8.
namespace parlivo::KeyPositions {

/// What X and Wayland's keymaps add to the kernel's code.
inline constexpr std::uint32_t displayOffset = 8;

/// The kernel's code of a key of the port; nullopt if no PC keyboard has it.
std::optional<std::uint32_t> kernelCodeOf(KeyCode key);
/// The inverse. A key without a code of its own in the port counts from VirtualKey::firstKernelCode on.
/// nullopt for modifiers and locks, which can be no hot key.
std::optional<KeyCode> keyCodeOf(std::uint32_t kernelCode);
/// The same from the code that X or Wayland's keymaps count by.
std::optional<KeyCode> keyCodeOfDisplays(std::uint32_t displayCode);

}  // namespace parlivo::KeyPositions
