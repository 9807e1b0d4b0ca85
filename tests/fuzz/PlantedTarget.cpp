// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"

namespace parlivo::fuzz {

/// A target with a fault in it, to see that it is found.
void attack(const QByteArray& input) {
    expect(input.size() < 2 || !input.startsWith('(') || input.endsWith(')'), "what is opened is closed");
}

}  // namespace parlivo::fuzz
