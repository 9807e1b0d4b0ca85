// SPDX-License-Identifier: MIT
#pragma once

#include "app/menu/StatusMenu.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace parlivo {

/// The state of a dictation. Changed by AppDelegate only, on the main thread.
enum class State : std::uint8_t { idle, recording, transcribing, cleaning, typing };

/// The first line of the menu. On macOS the idle text names ⌥Spazio whatever preset is chosen; elsewhere it
/// names the chosen one.
QString statusText(State state);
/// The inverse; nullopt if the text is that of no state.
std::optional<State> stateOf(const QString& text);
/// The name of the case, as it is announced on the bus.
QString caseName(State state);

/// What the status item shows.
struct StateIcon {
    QString symbol;
    Tint tint;
};
StateIcon iconOf(State state);

}  // namespace parlivo
