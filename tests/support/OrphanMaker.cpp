// SPDX-License-Identifier: MIT

// Starts the program named by its arguments the way Parlivo starts an engine, prints its process id, and
// waits to be killed.

#include "platform/linux/base/ChildSetup.h"
#include "support/ChildProcess.h"
#include "support/ChildProcesses.h"

#include <QCoreApplication>
#include <QStringList>

#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().sliced(1);
    parlivo::ChildProcess::setChildSetup(parlivo::linuxChildSetup());
    const auto child = parlivo::ChildProcess::launch({arguments.takeFirst(), arguments});
    std::printf("%lld\n", parlivo::childProcessesOf(getpid()).at(0));
    std::fflush(stdout);
    while (true) pause();
}
