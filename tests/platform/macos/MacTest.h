// SPDX-License-Identifier: MIT
#pragma once

#include "platform/macos/fakes/Calls.h"
#include "support/PlatformTest.h"

namespace parlivo {

/// A test of an adapter, or of a rule through one: no calls recorded yet, no objects of the system's alive.
/// At its end none may be left.
class MacTest : public PlatformTest {
  protected:
    MacTest() { mac::forgetCalls(); }
    ~MacTest() override { EXPECT_EQ(mac::living(), 0) << "objects that nobody released"; }
    MacTest(const MacTest&) = delete;
    MacTest& operator=(const MacTest&) = delete;
};

}  // namespace parlivo
