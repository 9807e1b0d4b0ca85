// SPDX-License-Identifier: MIT
#include "platform/linux/base/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <utility>

namespace parlivo {

namespace {

constexpr std::array handledSignals{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> writeEnd{-1};

// Only async-signal-safe calls here.
void announce(int) {
    const char byte = 0;
    if (write(writeEnd.load(), &byte, 1) < 0) return;  // a full pipe: the request is known already
}

void handleAll(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : handledSignals) sigaction(number, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> requested) : notifier_(QSocketNotifier::Read) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    readEnd_.reset(ends[0]);
    writeEnd_.reset(ends[1]);
    writeEnd = writeEnd_.get();
    notifier_.setSocket(readEnd_.get());
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_,
                     [read = readEnd_.get(), requested = std::move(requested)] {
                         char byte = 0;
                         while (::read(read, &byte, 1) > 0) continue;
                         requested();
                     });
    notifier_.setEnabled(true);
    handleAll(announce);
}

TerminationSignals::~TerminationSignals() {
    if (!readEnd_) return;
    handleAll(SIG_DFL);
    writeEnd = -1;
}

}  // namespace parlivo
