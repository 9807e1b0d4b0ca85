// SPDX-License-Identifier: MIT

// Kernel events (kqueue) for the ends of processes, through what Linux has for them. It runs in processes
// that share memory with nobody and have only plain calls of the system.
#include <fcntl.h>
#include <poll.h>
#include <sys/event.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

namespace {

struct Watched {
    pid_t process = 0;
    int descriptor = -1;
};

std::array<Watched, 2> watched;
int count = 0;

}  // namespace

int kqueue() {
    count = 0;
    return dup2(0, 0) < 0 ? open("/dev/null", O_RDWR) : -1;  // everything was closed before
}

int kevent(int /*kq*/, const struct kevent* changelist, int nchanges, struct kevent* eventlist, int nevents,
           const struct timespec* timeout) {
    if (nchanges == 1) {
        const bool understood = changelist->filter == EVFILT_PROC &&
                                changelist->flags == (EV_ADD | EV_ONESHOT) && changelist->fflags == NOTE_EXIT;
        const auto process = static_cast<pid_t>(changelist->ident);
        const auto descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
        if (!understood || descriptor < 0) return -1;
        watched.at(static_cast<std::size_t>(count++)) = {process, descriptor};
    }
    if (nevents == 0) return 0;
    if (timeout != nullptr) return -1;
    std::array<pollfd, 2> questions{};
    for (std::size_t i = 0; i < questions.size(); ++i)
        questions.at(i) = {watched.at(i).descriptor, POLLIN, 0};
    if (poll(questions.data(), static_cast<nfds_t>(count), -1) <= 0) return -1;
    for (std::size_t i = 0; i < questions.size(); ++i) {
        if (questions.at(i).revents == 0) continue;
        eventlist->ident = static_cast<decltype(eventlist->ident)>(watched.at(i).process);
        return 1;
    }
    return -1;
}
