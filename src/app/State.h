#pragma once

#include "app/menu/StatusMenu.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace parlivo {

/// Where a dictation stands. One at a time; changed by AppDelegate alone, on the main thread.
enum class State : std::uint8_t { idle, recording, transcribing, cleaning, typing };

/// The first line of the menu. The idle text names ⌥Spazio whatever preset is chosen.
QString statusText(State state);
/// The inverse; nothing for a text that is no state's.
std::optional<State> stateOf(const QString& statusText);
/// The name of the case, as the bus tells it.
QString caseName(State state);

/// What the status item shows.
struct StateIcon {
    QString symbol;
    Tint tint;
};
StateIcon iconOf(State state);

}  // namespace parlivo
