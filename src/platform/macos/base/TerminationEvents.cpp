// SPDX-License-Identifier: MIT
#include "platform/macos/base/TerminationEvents.h"

#include <QCoreApplication>
#include <QEvent>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace parlivo {

namespace {

constexpr std::array handledSignals{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> signalEnd{-1};

// Only async-signal-safe calls here.
void announce(int) {
    const int kept = errno;
    const char byte = 0;
    if (write(signalEnd.load(), &byte, 1) < 0) errno = kept;  // a full pipe: the request is known already
}

void handleAll(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : handledSignals) sigaction(number, &action, nullptr);
}

bool prepare(int descriptor) {
    return fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0 && fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

}  // namespace

TerminationEvents::TerminationEvents(std::function<void()> requested) : requested_(std::move(requested)) {
    QCoreApplication::instance()->installEventFilter(this);
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) return;
    readEnd_.reset(ends[0]);
    writeEnd_.reset(ends[1]);
    if (!prepare(readEnd_.get()) || !prepare(writeEnd_.get())) return;
    signalEnd = writeEnd_.get();
    notifier_.setSocket(readEnd_.get());
    connect(&notifier_, &QSocketNotifier::activated, this, [this] { drain(); });
    notifier_.setEnabled(true);
    handleAll(announce);
}

TerminationEvents::~TerminationEvents() {
    if (signalEnd.load() < 0) return;
    handleAll(SIG_DFL);
    signalEnd = -1;
}

/// The toolkit goes on with the event: it closes the windows and ends the loop, if `requested` has not.
bool TerminationEvents::eventFilter(QObject* watched, QEvent* event) {
    if (watched == QCoreApplication::instance() && event->type() == QEvent::Quit) requested_();
    return false;
}

void TerminationEvents::drain() {
    char byte = 0;
    while (read(readEnd_.get(), &byte, 1) > 0) continue;
    requested_();
}

}  // namespace parlivo
