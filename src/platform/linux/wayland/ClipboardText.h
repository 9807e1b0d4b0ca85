// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"
#include "support/UniqueFd.h"

#include <QString>

#include <array>
#include <optional>

/// What clipboards of Wayland sessions have in common, however they are reached.
namespace parlivo::wayland {

/// The types of plain text, the best first. All are UTF-8.
inline constexpr std::array textTypes{"text/plain;charset=utf-8", "UTF8_STRING", "text/plain", "TEXT",
                                      "STRING"};

/// What Klipper and most other clipboard managers leave out of their history.
inline constexpr const char* secretHint = "x-kde-passwordManagerHint";
inline constexpr const char* secretHintValue = "secret";

/// All that comes out of a pipe until its other end is closed; nullopt if that takes too long or the program
/// ends.
std::optional<QString> readText(const UniqueFd& pipe, const Clock::Deadline& deadline);

}  // namespace parlivo::wayland
