// SPDX-License-Identifier: MIT
#include "support/LoopJobs.h"

#include "support/Clock.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace parlivo {

LoopJobs::~LoopJobs() {
    // What the thread did last came about under this lock; Qt's waiting for its end alone hides that from
    // ThreadSanitizer.
    const std::lock_guard lock(mutex_);
}

void LoopJobs::post(Job job) {
    const std::lock_guard lock(mutex_);
    jobs_.push_back(std::move(job));
    // Before any painting that waits: a key must not wait for a picture.
    QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
}

void LoopJobs::run(const Job& job) {
    Clock::Signal done;
    post([&] {
        job();
        done.raise();
    });
    done.waitUninterrupted();
}

void LoopJobs::customEvent(QEvent*) {
    Job job;
    {
        const std::lock_guard lock(mutex_);
        job = std::move(jobs_.front());
        jobs_.pop_front();
    }
    job();
}

}  // namespace parlivo
