// SPDX-License-Identifier: MIT
#include "platform/macos/MacTest.h"
#include "platform/macos/base/TerminationEvents.h"
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QEvent>

#include <csignal>

namespace parlivo {
namespace {

class TerminationTest : public MacTest {
  protected:
    int requests = 0;
    TerminationEvents events{[this] { ++requests; }};
};

TEST_F(TerminationTest, TheSystemsRequestToQuitIsPassedOn) {
    QEvent quit(QEvent::Quit);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
    EXPECT_EQ(requests, 1);
}

TEST_F(TerminationTest, SignalsArriveOnTheMainThread) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        requests = 0;
        ASSERT_EQ(std::raise(number), 0);
        EXPECT_EQ(requests, 0) << "not from within the signal";
        EXPECT_TRUE(desktop::waitFor([this] { return requests == 1; })) << number;
    }
}

TEST_F(TerminationTest, OtherEventsAreNoRequest) {
    QEvent other(QEvent::ApplicationPaletteChange);
    QCoreApplication::sendEvent(QCoreApplication::instance(), &other);
    EXPECT_EQ(requests, 0);
}

}  // namespace
}  // namespace parlivo
