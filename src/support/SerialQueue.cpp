// SPDX-License-Identifier: MIT
#include "support/SerialQueue.h"

#include <QThread>

#include <future>
#include <utility>

namespace parlivo {

SerialQueue::SerialQueue(const QString& label, AtEnd atEnd)
    : atEnd_(atEnd), thread_(QThread::create([this] { run(); })) {
    thread_->setObjectName(label);
    thread_->start();
}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        if (atEnd_ == AtEnd::DropWaiting) jobs_.clear();
    }
    changed_.notify_all();
    // Through our own lock, so that what the jobs wrote is seen here; Qt's waiting alone hides that from
    // ThreadSanitizer.
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return ended_; });
    }
    thread_->wait();
}

void SerialQueue::async(Job job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    changed_.notify_one();
}

void SerialQueue::waitUntilDone() {
    std::promise<void> reached;
    async([&reached] { reached.set_value(); });
    reached.get_future().wait();
}

void SerialQueue::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !jobs_.empty(); });
        if (jobs_.empty()) break;
        {
            const Job job = std::move(jobs_.front());
            jobs_.pop_front();
            lock.unlock();
            job();
        }
        lock.lock();
    }
    ended_ = true;
    changed_.notify_all();
}

}  // namespace parlivo
