// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QByteArray>

#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace parlivo::wayland {

/// A connection of our own to the compositor, with a thread that sends requests and handles events. All
/// objects made through it are used on that thread only; `run` brings other threads there.
class WaylandConnection {
  public:
    using Job = std::function<void()>;

    /// Null if no compositor answers (variables WAYLAND_DISPLAY, XDG_RUNTIME_DIR).
    static std::unique_ptr<WaylandConnection> open();
    /// Objects that were not destroyed end with the connection.
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// Runs `job` on the connection's thread, sends off what it asked for and returns. False, with the job
    /// not run, if the connection is broken. Any other thread.
    bool run(const Job& job);

    /// Whether the compositor has ended it. Any thread.
    bool isBroken();

    /// Waits until the compositor has handled all requests so far, and handles what it sent. False if the
    /// connection is broken. Connection thread.
    bool roundTrip();

    /// Runs `job` on the connection's thread once the compositor has handled all requests so far, between the
    /// events that it sent before and those that it sent after. Not run if the connection breaks before.
    /// Connection thread.
    void afterRequests(Job job);

    /// A global of the compositor's, of at most `version`; null if it has none. The first one where there are
    /// several. Connection thread.
    template <typename T>
    T* bind(const wl_interface& interface, std::uint32_t version) {
        const auto name = firstGlobal(interface);
        return name ? bindNamed<T>(*name, interface, version) : nullptr;
    }
    /// The global of this name; null if it is gone. Connection thread.
    template <typename T>
    T* bindNamed(std::uint32_t name, const wl_interface& interface, std::uint32_t version) {
        return static_cast<T*>(bindGlobal(name, interface, version));
    }
    /// Whether the compositor has such a global. Any other thread; waits for the compositor's first answer.
    bool offers(const wl_interface& interface);

    /// Tells all globals of one interface, those that are there and each one that comes or goes later.
    struct GlobalWatch {
        const wl_interface* interface = nullptr;
        std::function<void(std::uint32_t name)> added;
        std::function<void(std::uint32_t name)> removed;
    };
    /// In place of the former watch; an empty one ends it. Connection thread.
    void watchGlobals(GlobalWatch watch);

    /// `broken` is called once if the connection breaks, before run() says so. In place of the former; an
    /// empty function ends it. Connection thread, as is the call.
    void onBreak(Job broken) { onBreak_ = std::move(broken); }

    /// Writes `bytes` into a pipe as fast as its reader takes them, then closes it. Connection thread.
    void send(UniqueFd pipe, const QByteArray& bytes);

  private:
    struct Global {
        std::string interface;
        std::uint32_t version = 0;
    };
    class Echo;
    struct Transfer {
        UniqueFd pipe;
        QByteArray bytes;
        qsizetype sent = 0;
    };
    struct Disconnect {
        void operator()(wl_display* display) const { wl_display_disconnect(display); }
    };
    using Display = std::unique_ptr<wl_display, Disconnect>;

    WaylandConnection(Display display, UniqueFd wakeUp);
    void loop();
    void listGlobals();
    /// False if the connection is broken.
    bool handleEvents();
    void runJobs();
    void wake() const;
    enum class Unsent { None, Some };
    void waitForEvents(Unsent unsent);
    void continueTransfers();
    void globalAdded(std::uint32_t name, const char* interface, std::uint32_t version);
    void globalRemoved(std::uint32_t name);
    std::optional<std::uint32_t> firstGlobal(const wl_interface& interface) const;
    void* bindGlobal(std::uint32_t name, const wl_interface& interface, std::uint32_t version);

    Display display_;
    const UniqueFd wakeUp_;  // eventfd(2)
    wl_registry* registry_ = nullptr;
    std::map<std::uint32_t, Global> globals_;  // by name
    GlobalWatch watch_;
    std::list<Echo> echoes_;  // that are to come
    std::vector<Transfer> transfers_;
    Job onBreak_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<const Job*> jobs_;  // under mutex_
    bool broken_ = false;          // under mutex_
    bool ending_ = false;          // under mutex_
    std::thread thread_;
};

}  // namespace parlivo::wayland
