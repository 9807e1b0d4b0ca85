// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/wayland/WaylandReceiver.h"
#include "support/Clock.h"

#include <QtGlobal>

#include <cstdio>

namespace parlivo::desktop {

/// Prints how long a text took that has arrived whole: a line that tests/desktops/run passes on. For tables,
/// and not judged here, since it depends on what else the machine does.
inline void tellMeasured(WaylandReceiver::Kind kind, const char* way, qsizetype characters,
                         Clock::Duration taken) {
    const double seconds = std::chrono::duration<double>(taken).count();
    std::printf("measured: | %s | %s | %lld | %.0f ms | %.0f a second |\n", nameOf(kind).c_str(), way,
                static_cast<long long>(characters), 1'000 * seconds,
                static_cast<double>(characters) / seconds);
    std::fflush(stdout);
}

}  // namespace parlivo::desktop
