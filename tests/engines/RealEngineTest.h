// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"
#include "support/PlatformTest.h"

#include <QtGlobal>

namespace parlivo {

/// A test with a real engine. The environment variable PARLIVO_TEST_SLOWNESS says how many times longer than
/// on a real processor everything may take, for engines in an emulator.
class RealEngineTest : public PlatformTest {
  protected:
    RealEngineTest() {
        if (const int slowness = qEnvironmentVariableIntValue("PARLIVO_TEST_SLOWNESS"); slowness > 0) {
            Clock::setScale(slowness);
        }
    }
};

}  // namespace parlivo
