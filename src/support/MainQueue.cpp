// SPDX-License-Identifier: MIT
#include "support/MainQueue.h"

#include "support/Clock.h"
#include "support/LoopJobs.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <memory>
#include <utility>

namespace parlivo::MainQueue {

namespace {

Job guarded(const Lifetime::Token& owner, Job job) {
    return [owner, job = std::move(job)] {
        if (!owner.expired()) job();
    };
}

/// A job that another thread waits for. The thread that sets `claimed` first decides: the main thread runs
/// the job, or the waiting thread abandons it.
struct Rendezvous {
    std::atomic<bool> claimed = false;
    Clock::Signal done;
};

/// Created by the first caller, on any thread. It outlives the application object, whose last events may
/// still post jobs; jobs that are posted after its end never run.
LoopJobs& jobs() {
    static const auto queue = [] {
        auto made = std::make_unique<LoopJobs>();
        made->moveToThread(QCoreApplication::instance()->thread());
        return made;
    }();
    return *queue;
}

}  // namespace

void async(Job job) {
    jobs().post(std::move(job));
}

void async(const Lifetime::Token& owner, Job job) {
    async(guarded(owner, std::move(job)));
}

void after(std::chrono::milliseconds delay, const Lifetime::Token& owner, Job job) {
    // A timer belongs to the thread that starts it, so the start itself is moved to the main thread.
    async([delay, job = guarded(owner, std::move(job))] {
        QTimer::singleShot(Clock::scaled(delay), Qt::PreciseTimer, QCoreApplication::instance(), job);
    });
}

bool isCurrent() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

bool sync(const Job& job) {
    if (isCurrent()) {
        job();
        return true;
    }
    auto meeting = std::make_shared<Rendezvous>();
    async([meeting, &job] {
        if (meeting->claimed.exchange(true)) return;
        job();
        meeting->done.raise();
    });
    if (meeting->done.wait()) return true;
    // Interrupted. If the main thread is already running the job, which uses the caller's variables, wait for
    // its end.
    if (!meeting->claimed.exchange(true)) return false;
    meeting->done.waitUninterrupted();
    return true;
}

}  // namespace parlivo::MainQueue
