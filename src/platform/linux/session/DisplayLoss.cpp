// SPDX-License-Identifier: MIT
#include "platform/linux/session/DisplayLoss.h"

#include <QLatin1String>
#include <QString>

#include <atomic>
#include <cstdlib>
#include <utility>

namespace parlivo {

namespace {

// What a message handler and an exit handler can reach.
std::atomic<bool> watching = false;
std::function<void()> lastCall;
QtMessageHandler formerHandler = nullptr;

void endAtOnce() {
    if (!watching.exchange(false)) return;
    lastCall();
    std::_Exit(EXIT_FAILURE);
}

void readMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    formerHandler(type, context, message);
    if (message.startsWith(QLatin1String("The X11 connection broke")) ||
        message.startsWith(QLatin1String("The Wayland connection broke"))) {
        endAtOnce();
    }
}

}  // namespace

DisplayLoss::DisplayLoss(std::function<void()> last) {
    lastCall = std::move(last);
    formerHandler = qInstallMessageHandler(readMessage);
    // Should Qt put it in other words.
    static const int registered = std::atexit(endAtOnce);
    watching = registered == 0;
}

DisplayLoss::~DisplayLoss() {
    watching = false;
    qInstallMessageHandler(formerHandler);
}

}  // namespace parlivo
