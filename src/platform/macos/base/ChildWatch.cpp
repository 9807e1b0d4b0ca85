// SPDX-License-Identifier: MIT
#include "platform/macos/base/ChildWatch.h"

#include <sys/event.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace parlivo {

namespace {

// Everything below runs in a copy of a program with several threads: only plain calls of the system.

/// The pipes of the child would look open to their readers for as long as a copy of them is.
void closeEverything() {
    const int end = getdtablesize();
    for (int descriptor = 0; descriptor < end; ++descriptor) close(descriptor);
}

struct kevent exitOf(pid_t process) {
    struct kevent event {};
    event.ident = static_cast<decltype(event.ident)>(process);
    event.filter = EVFILT_PROC;
    event.flags = EV_ADD | EV_ONESHOT;
    event.fflags = NOTE_EXIT;
    return event;
}

bool watch(int queue, pid_t process) {
    const struct kevent event = exitOf(process);
    return kevent(queue, &event, 1, nullptr, 0, nullptr) == 0;
}

/// Returns the process that ended first; 0 when the system does not tell.
pid_t firstToEnd(int queue) {
    struct kevent event {};
    int count = 0;
    do {
        count = kevent(queue, nullptr, 0, &event, 1, nullptr);
    } while (count < 0 && errno == EINTR);
    return count == 1 ? static_cast<pid_t>(event.ident) : 0;
}

/// A program that cannot be watched is taken for dead: an engine that nobody ends would keep its port and
/// some gigabytes of memory.
[[noreturn]] void keepWatch(pid_t program, pid_t child) {
    closeEverything();
    const int queue = kqueue();
    const bool childWatched = watch(queue, child);
    const bool programWatched = watch(queue, program);
    if (childWatched && (!programWatched || firstToEnd(queue) != child)) kill(child, SIGKILL);
    _exit(0);
}

}  // namespace

std::function<void()> macChildSetup() {
    return [program = getpid()] {
        setsid();
        // The program may have ended before anybody watched it.
        if (getppid() != program) _exit(1);
        const pid_t child = getpid();
        const pid_t watcher = fork();
        if (watcher < 0) _exit(1);
        if (watcher == 0) keepWatch(program, child);
    };
}

}  // namespace parlivo
