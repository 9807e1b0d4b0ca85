// SPDX-License-Identifier: MIT
#pragma once

#include "support/SerialQueue.h"
#include "support/Waiting.h"

#include <atomic>
#include <functional>

namespace parlivo::desktop {

/// A queue that does the program's slow work, seen from the main thread, which goes on handling events.
class Pipeline {
  public:
    /// Starts a job.
    void start(SerialQueue::Job job) {
        done_ = false;
        queue_.async([this, job = std::move(job)] {
            job();
            done_ = true;
        });
    }
    bool isDone() const { return done_; }
    /// Waits until the job is done. False if that takes too long.
    bool finish() {
        return waitFor([this] { return isDone(); });
    }
    bool run(SerialQueue::Job job) {
        start(std::move(job));
        return finish();
    }

  private:
    std::atomic<bool> done_ = true;
    SerialQueue queue_{QStringLiteral("pipeline")};
};

}  // namespace parlivo::desktop
