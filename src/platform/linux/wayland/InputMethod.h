// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/wayland/WaylandConnection.h"
#include "support/Clock.h"

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

struct zwp_input_method_manager_v2;
struct zwp_input_method_v2;

namespace parlivo::wayland {

/// The seat's input method (zwp_input_method_v2): what it commits stands in the focused text field, whatever
/// the keyboard can type. A seat has one, the first that asked for it; so this one is kept while the program
/// lives.
///
/// A commit carries the number of `done` events received so far. If another one was under way, the compositor
/// drops the commit without a word. So every commit is followed by a question whose answer tells, by its
/// place among the events, whether the commit was in time; if not, it is sent again.
///
/// One thread at a time, not the connection's.
class InputMethod {
  public:
    /// Null if the compositor knows no such thing. The connection must outlive this.
    static std::unique_ptr<InputMethod> make(WaylandConnection& connection);
    ~InputMethod();
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    enum class Presence {
        Refused,   ///< another input method has the seat, or the compositor is gone
        Inactive,  ///< no text field has the focus, or one that takes no text in this way
        Active,
    };
    /// At present. Any thread.
    Presence presence();
    /// Waits until it is active. False if it is refused, or at `end` or the program's end.
    bool waitUntilActive(Clock::TimePoint end);

    enum class Commit {
        Accepted,
        NoField,  ///< nothing was sent: it is not active
        Failed,   ///< nothing was sent: the field changed all the time, or the compositor is gone
    };
    /// Enters text (UTF-8 without zeros, at most 4,000 bytes) at the cursor. Waits for the compositor, but
    /// not for the field.
    Commit commit(const QByteArray& text);

    /// Waits until the text field has reacted to the last commit that was accepted, or cannot any more
    /// because this is refused. False at `end` or at the program's end.
    bool waitForAnswer(Clock::TimePoint end);

  private:
    enum class Fate { Unknown, Accepted, Late, NoField };

    explicit InputMethod(WaylandConnection& connection) : connection_(connection) {}

    // On the connection's thread.
    bool start();
    void send(const QByteArray& text);
    void done();
    void tell(const std::function<void()>& change);

    bool waitFor(const std::function<bool()>& condition, Clock::TimePoint end);

    WaylandConnection& connection_;
    zwp_input_method_manager_v2* manager_ = nullptr;
    zwp_input_method_v2* handle_ = nullptr;
    bool nextActive_ = false;   // as told since the last `done`
    std::uint32_t serial_ = 0;  // `done` events so far
    /// Held as long as the compositor's answers may be taken.
    std::shared_ptr<const bool> alive_ = std::make_shared<bool>(true);

    std::mutex mutex_;
    Presence presence_ = Presence::Inactive;  // under mutex_
    Fate fate_ = Fate::Unknown;               // under mutex_
    bool answered_ = true;                    // under mutex_
    std::shared_ptr<Clock::Signal> waiting_;  // under mutex_; raised at the next change
};

}  // namespace parlivo::wayland
