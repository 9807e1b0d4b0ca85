// SPDX-License-Identifier: MIT
#include "desktop/stress/Storm.h"

#include <chrono>
#include <iostream>
#include <random>

namespace parlivo::desktop {
namespace {

std::uint32_t numberFrom(const char* variable, std::uint32_t otherwise) {
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariable(variable).toUInt() : otherwise;
}

/// Sequences of consecutive seeds, until one goes wrong.
class StormTest : public Storm {
  protected:
    void runFrom(std::uint32_t seed, std::uint32_t count) {
        std::cout << "  seeds " << seed << " to " << seed + count - 1 << std::endl;
        for (std::uint32_t i = 0; i < count && !HasFailure(); ++i) {
            run(seed + i);
            if ((i + 1) % 100 == 0)
                std::cout << "  after " << i + 1 << ": " << texts() << " texts" << std::endl;
        }
        EXPECT_GT(texts(), 0);
    }
};

TEST_F(StormTest, FixedSequences) {
    runFrom(numberFrom("PARLIVO_STORM_SEED", 1), numberFrom("PARLIVO_STORM_SEQUENCES", 15));
}

TEST_F(StormTest, RandomSequences) {
    runFrom(std::random_device()(), 10);
}

}  // namespace
}  // namespace parlivo::desktop
