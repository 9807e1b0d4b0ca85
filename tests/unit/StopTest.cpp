// SPDX-License-Identifier: MIT
#include "support/Stop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace parlivo {
namespace {

TEST(StopTest, ATokenTellsWhatItsSourceWasAsked) {
    StopSource source;
    const StopToken token = source.token();
    EXPECT_FALSE(token.stopRequested());
    source.requestStop();
    EXPECT_TRUE(token.stopRequested());
    EXPECT_FALSE(StopToken().stopRequested());
}

TEST(StopTest, EveryCallbackIsCalledOnce) {
    StopSource source;
    int calls = 0;
    const StopCallback first(source.token(), [&] { ++calls; });
    const StopCallback second(source.token(), [&] { ++calls; });
    const StopCallback ofNobody(StopToken(), [&] { ++calls; });
    source.requestStop();
    source.requestStop();
    EXPECT_EQ(calls, 2);
}

TEST(StopTest, ACallbackThatComesLateIsCalledAtOnce) {
    StopSource source;
    source.requestStop();
    int calls = 0;
    const StopCallback late(source.token(), [&] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(StopTest, ACallbackThatHasEndedIsNotCalled) {
    StopSource source;
    int calls = 0;
    {
        const StopCallback ended(source.token(), [&] { ++calls; });
    }
    source.requestStop();
    EXPECT_EQ(calls, 0);
}

TEST(StopTest, ACallbackMayEndItselfAndOthers) {
    StopSource source;
    int calls = 0;
    std::unique_ptr<StopCallback> first;
    std::unique_ptr<StopCallback> second;
    const auto endBoth = [&] {
        ++calls;
        first.reset();
        second.reset();
    };
    first = std::make_unique<StopCallback>(source.token(), endBoth);
    second = std::make_unique<StopCallback>(source.token(), endBoth);
    source.requestStop();
    EXPECT_EQ(calls, 1);
}

TEST(StopTest, DestroyingACallbackWaitsForItsCall) {
    StopSource source;
    std::atomic<bool> begun = false;
    std::atomic<bool> done = false;
    auto callback = std::make_unique<StopCallback>(source.token(), [&] {
        begun = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    });
    std::thread other([&] { source.requestStop(); });
    while (!begun) std::this_thread::yield();
    callback.reset();
    EXPECT_TRUE(done);
    other.join();
}

}  // namespace
}  // namespace parlivo
