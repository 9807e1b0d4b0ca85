// SPDX-License-Identifier: MIT
#include "dictation/StartAndIdle.h"

#include "desktop/tray/NotifierWatcher.h"
#include "dictation/ProcessStatus.h"
#include "dictation/Testbed.h"
#include "support/Waiting.h"

#include <chrono>
#include <csignal>

namespace parlivo::bench {

using namespace std::chrono_literals;
using namespace desktop;

namespace {

/// From the start until the item is on the panel, the key is grabbed and the bus answers.
double timeToReady(const QString& bundle, const QProcessEnvironment& environment,
                   const NotifierWatcher& panel) {
    const auto before = panel.items().size();
    const auto begin = SteadyClock::now();
    Program program(bundle, environment);
    require(waitFor([&] { return panel.items().size() > before; }), "no item came onto the panel");
    // Asked before the panel has the item, the program might be waiting for the panel, which is this thread.
    require(program.waitUntilUp(), "the program does not come up");
    const auto ready = SteadyClock::now();
    program.signal(SIGTERM);
    require(program.waitForExit() == 0, "the program does not end");
    return milliseconds(ready - begin);
}

}  // namespace

void measureStart(Table& table, const QString& bundle, int rounds, const QProcessEnvironment& environment,
                  const std::string& what) {
    const NotifierWatcher panel;
    timeToReady(bundle, environment, panel);  // from the disk
    Samples samples;
    for (int round = 0; round < rounds; ++round) samples.add(timeToReady(bundle, environment, panel));
    table.row(what, "ms", samples, 250);
}

void measureIdle(Table& table, const Program& program) {
    constexpr int rounds = 3;
    constexpr auto settling = 10s;  // an error's stay in the status line, and the like
    constexpr auto window = 20s;
    letPass(settling);
    Samples wakeUps;
    Samples resident;
    Samples own;
    for (int round = 0; round < rounds; ++round) {
        const auto before = sleepsOf(program.processId());
        letPass(window);
        const auto sleeps = sleepsOf(program.processId()) - before;
        wakeUps.add(static_cast<double>(sleeps) / std::chrono::duration<double>(window).count());
        const Memory memory = memoryOf(program.processId());
        resident.add(memory.resident);
        own.add(memory.own);
    }
    require(program.isRunning() && !resident.empty() && resident.median() > 1, "nobody is idle");
    table.row("idle after all this: wake-ups a second, all threads", "", wakeUps, 1);
    table.row("resident memory then", "MB", resident, 70);
    table.row("of this not shared with other programs", "MB", own, {});
}

}  // namespace parlivo::bench
