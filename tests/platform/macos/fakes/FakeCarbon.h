// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The Carbon event manager, recording: one application with its handlers and hot keys.
namespace parlivo::mac {

struct CarbonScript {
    int refuseWith = 0;  ///< the status of the next registrations; 0 accepts
};
CarbonScript& carbon();

/// The system delivers an edge of a hot key; false when no handler took it.
bool deliverHotKey(bool pressed, std::uint32_t signature, std::uint32_t id);
/// Hot keys and handlers in force.
int hotKeysInForce();
int handlersInForce();
void resetCarbon();

}  // namespace parlivo::mac
