// SPDX-License-Identifier: MIT
#include "support/Waiting.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

namespace parlivo::desktop {

namespace {
constexpr int stepMilliseconds = 5;

void step() {
    if (QCoreApplication::instance() == nullptr) {
        QThread::msleep(stepMilliseconds);
        return;
    }
    QCoreApplication::processEvents(QEventLoop::AllEvents, stepMilliseconds);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QThread::msleep(1);
}
}  // namespace

bool waitFor(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        step();
    }
    return true;
}

void letPass(std::chrono::milliseconds duration) {
    waitFor([] { return false; }, duration);
}

}  // namespace parlivo::desktop
