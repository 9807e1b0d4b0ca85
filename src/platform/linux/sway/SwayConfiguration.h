// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QString>

#include <cstdint>

namespace parlivo::sway {

/// A combination, by both of the names that a configuration may use for its key.
struct Combination {
    HotKeyModifiers modifiers = 0;
    std::uint32_t code = 0;  ///< the position, as bindcode counts it
    QString symbol;          ///< the keysym's name, as bindsym takes it; or empty
};

/// Whether the text of a configuration of sway's (sway(5)) binds the combination in the default mode. Files
/// that it includes are not looked at, because sway does not tell their text.
bool configurationBinds(const QString& configuration, const Combination& combination);

}  // namespace parlivo::sway
