// SPDX-License-Identifier: MIT
#pragma once

#include "support/Stop.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace parlivo {

/// A job on a thread of its own that nobody waits for: a request, a download.
///
/// The thread that creates a Worker goes on at once, and so does the one that destroys it: a job may be held
/// up by a disk that does not answer. The job is told to stop when its Worker is destroyed and when the
/// program ends; what it tells its owner goes through MainQueue. Any thread.
class Worker {
  public:
    /// Must not throw.
    using Job = std::function<void(const StopToken& calledOff)>;

    /// `name` is that of the thread.
    Worker(const QString& name, Job job);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Tells all jobs to stop and waits until they have, `limit` at most (of the real clock); jobs that are
    /// held up end with the process. Main thread, at the program's end.
    static void endAll(std::chrono::milliseconds limit = std::chrono::seconds(2));

  private:
    struct Task;
    struct Registry;
    static Registry& registry();
    const std::shared_ptr<Task> task_;
};

}  // namespace parlivo
