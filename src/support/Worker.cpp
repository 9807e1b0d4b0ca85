// SPDX-License-Identifier: MIT
#include "support/Worker.h"

#include "support/Clock.h"

#include <QThread>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace parlivo {

struct Worker::Task {
    StopSource stop;
    std::unique_ptr<QThread> thread;
    bool ended = false;  // under the registry's mutex
};

/// All tasks whose threads have not been seen to end.
struct Worker::Registry {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::shared_ptr<Task>> tasks;  // under mutex

    /// Takes out the tasks that have ended, and waits for the last steps of their threads.
    void clean() {
        std::vector<std::shared_ptr<Task>> ended;
        {
            const std::lock_guard lock(mutex);
            const auto first =
                std::partition(tasks.begin(), tasks.end(), [](const auto& task) { return !task->ended; });
            ended.assign(first, tasks.end());
            tasks.erase(first, tasks.end());
        }
        for (const auto& task : ended) {
            task->thread->wait();
            task->thread.reset();
        }
    }
};

/// Never destroyed: a job that is held up at the program's end may still come back to it.
Worker::Registry& Worker::registry() {
    static Registry& instance = *std::make_unique<Registry>().release();
    return instance;
}

Worker::Worker(const QString& name, Job job) : task_(std::make_shared<Task>()) {
    registry().clean();
    task_->thread.reset(QThread::create([task = task_, job = std::move(job)]() mutable {
        {
            const StopCallback atEnd(Clock::ending(), [&task] { task->stop.requestStop(); });
            job(task->stop.token());
        }
        job = nullptr;  // what it held goes here and not with the thread
        const std::lock_guard lock(registry().mutex);
        task->ended = true;
        registry().changed.notify_all();
    }));
    task_->thread->setObjectName(name);
    const std::lock_guard lock(registry().mutex);
    registry().tasks.push_back(task_);
    task_->thread->start();
}

Worker::~Worker() {
    task_->stop.requestStop();
}

void Worker::endAll(std::chrono::milliseconds limit) {
    {
        std::unique_lock lock(registry().mutex);
        for (const auto& task : registry().tasks) task->stop.requestStop();
        registry().changed.wait_for(lock, limit, [] {
            return std::ranges::all_of(registry().tasks, [](const auto& task) { return task->ended; });
        });
    }
    registry().clean();
}

}  // namespace parlivo
