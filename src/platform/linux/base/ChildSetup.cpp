// SPDX-License-Identifier: MIT
#include "platform/linux/base/ChildSetup.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

namespace parlivo {

std::function<void()> linuxChildSetup() {
    return [parent = getpid()] {
        setsid();
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before the request: then the signal would never be sent.
        if (getppid() != parent) _exit(1);
    };
}

}  // namespace parlivo
