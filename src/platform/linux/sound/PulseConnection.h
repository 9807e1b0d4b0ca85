// SPDX-License-Identifier: MIT
#pragma once

#include "support/Clock.h"
#include "support/Error.h"

#include <pulse/pulseaudio.h>

#include <chrono>
#include <functional>
#include <memory>

namespace parlivo {

/// The C handles of libpulse. All but the loop must be released under the connection's lock.
template <auto release>
struct PulseRelease {
    template <class Handle>
    void operator()(Handle* handle) const {
        release(handle);
    }
};
using PulseLoopHandle = std::unique_ptr<pa_threaded_mainloop, PulseRelease<&pa_threaded_mainloop_free>>;
using PulseContextHandle = std::unique_ptr<pa_context, PulseRelease<&pa_context_unref>>;
using PulseStreamHandle = std::unique_ptr<pa_stream, PulseRelease<&pa_stream_unref>>;
using PulseOperationHandle = std::unique_ptr<pa_operation, PulseRelease<&pa_operation_unref>>;

/// A connection to the user's sound server, with a thread of its own that lives as long as it does.
///
/// There is one connection for each use and none between uses. Opening one takes a millisecond or two. In
/// exchange an idle program has no thread that wakes up, appears in no mixer, and does not have to handle a
/// restart of the server.
class PulseConnection {
  public:
    /// Connects. nullptr if no server answers before `end`, or it refuses.
    static std::unique_ptr<PulseConnection> open(Clock::TimePoint end);

    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    /// Excludes the connection's thread: libpulse's objects are used under this lock or in its callbacks,
    /// which hold it.
    class Lock {
      public:
        explicit Lock(const PulseConnection& connection);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        pa_threaded_mainloop* loop_;
    };

    pa_context* context() const { return context_.get(); }
    bool isAlive() const { return pa_context_get_state(context_.get()) == PA_CONTEXT_READY; }

    /// Waits, under the lock, until `condition` holds. False when `end` passed first. The condition is
    /// checked after each wake().
    bool waitUntil(Clock::TimePoint end, const std::function<bool()>& condition) const;
    /// Lets the waiting thread check its condition again. For callbacks.
    void wake() const;

    /// The server's last error, in its own words. Under the lock.
    Error lastError() const { return error(pa_context_errno(context_.get())); }
    /// The error of this code (pa_error_code).
    static Error error(int code);

    /// Called on the connection's thread, under the lock, when the server goes away. Set under the lock.
    std::function<void()> onLost;

  private:
    PulseConnection() = default;
    bool connect(Clock::TimePoint end);
    static void contextChanged(pa_context* context, void* self);

    // The loop is destroyed last: the context lives on its thread.
    PulseLoopHandle loop_;
    PulseContextHandle context_;
};

}  // namespace parlivo
