// SPDX-License-Identifier: MIT

// Our own declarations of what the adapters use of this system interface, so that they can be compiled and called where
// the system is not at hand. tests/platform/macos/check-declarations compares them with published type lists.
#pragma once

#include <cstdint>
#include <ctime>

extern "C" {

struct kevent {
    std::uintptr_t ident;
    std::int16_t filter;
    std::uint16_t flags;
    std::uint32_t fflags;
    std::intptr_t data;
    void* udata;
};

// Macros there, which no list holds: from kqueue(2).
constexpr std::int16_t EVFILT_PROC = -5;
constexpr std::uint16_t EV_ADD = 0x0001;
constexpr std::uint16_t EV_ONESHOT = 0x0010;
constexpr std::uint32_t NOTE_EXIT = 0x80000000;

int kqueue(void);
int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist, int nevents, const struct timespec* timeout);

}
