// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>
#include <string>
#include <vector>

/// What the program does with a recording, a text or a dictionary, each at the size that is asked for.
namespace parlivo::bench {

struct Stage {
    using Work = std::function<void()>;

    std::string name;  ///< one word, for the command line
    std::string what;  ///< for people
    std::string unit;  ///< what the size counts
    std::vector<qint64> sizes;
    /// Makes all ready and gives the work, which may be done more than once. Throws what goes wrong; the work
    /// does so, too.
    std::function<Work(qint64 size)> prepare;
};

/// All of them. Work is done on the pipeline's thread while the main thread handles events, as in the
/// program. Needs the display's keyboard and clipboard, FakePlatform's bundle and settings, and free ports of
/// the engines.
const std::vector<Stage>& stages();

}  // namespace parlivo::bench
