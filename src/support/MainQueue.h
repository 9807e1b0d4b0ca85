// SPDX-License-Identifier: MIT
#pragma once

#include "support/Lifetime.h"

#include <chrono>
#include <functional>

/// The main thread seen as a queue. Every operation may be called from any thread and returns at once.
///
/// Code that already runs on the main thread and whose owner is a QObject uses QTimer::singleShot with the
/// owner as context instead. From other threads QMetaObject::invokeMethod is not used, because a worker
/// cannot keep a context object alive (see Lifetime) and because ThreadSanitizer does not see the locks in
/// Qt that hand a functor over (see LoopJobs).
namespace parlivo::MainQueue {

using Job = std::function<void()>;

/// Runs `job` on the main thread, after what is already queued there.
void async(Job job);
/// The same, unless `owner` has expired by then.
void async(const Lifetime::Token& owner, Job job);

/// Runs `job` on the main thread once `delay` has passed, unless `owner` has expired by then.
void after(std::chrono::milliseconds delay, const Lifetime::Token& owner, Job job);

/// Whether the caller runs on the main thread.
bool isCurrent();

/// Runs `job` on the main thread and waits for it; on the main thread itself it runs at once. Returns false,
/// without having run the job, if the program ends meanwhile: the main thread may then be waiting for the
/// calling thread.
bool sync(const Job& job);

}  // namespace parlivo::MainQueue
