// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QByteArray>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <span>

namespace parlivo::bench {

/// The whole number at a place of the command line, or `otherwise` where it ends before.
inline int argument(std::span<char*> arguments, std::size_t at, int otherwise) {
    return arguments.size() > at ? QByteArray(arguments[at]).toInt() : otherwise;
}

/// The main function of a benchmark that works with the tests' helpers: what they find wrong ends the
/// measurement. Calls `run(arguments)` for the status; 2 and a line that says why if it throws.
template <typename Run>
int runBenchmark(int argc, char** argv, Run run) {
    testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(throw_on_failure, true);
    const QApplication application(argc, argv);
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    try {
        return run(arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[0], failure.what());
        return 2;
    }
}

}  // namespace parlivo::bench
