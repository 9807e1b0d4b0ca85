// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Pasteboard.h"
#include "support/Clock.h"

#include <QString>

#include <cstdint>
#include <mutex>
#include <optional>

namespace parlivo {

/// What the user had on the pasteboard before the last paste, until it is put back. Any thread.
class PendingRestore {
  public:
    /// Names one paste.
    using Ticket = std::uint64_t;
    struct Kept {
        QString pasted;
        PasteboardTexts before;
        /// When it is to be put back; in the past as long as the paste has not been posted.
        Clock::TimePoint due{};
    };
    struct Last {
        Ticket ticket = 0;
        Clock::TimePoint due;
    };

    /// Keeps what a paste of `pasted` displaces. A place that still holds the text of an earlier paste, one
    /// whose restore was called off, holds nothing of the user's: there the earlier paste's text counts.
    Ticket keep(const QString& pasted, PasteboardTexts present, const std::optional<Kept>& calledOff);

    /// Says when the texts of that paste are to be put back.
    void setDue(Ticket ticket, Clock::TimePoint due);

    /// Ends the wait of the last paste, if it still waits, and gives what it kept.
    std::optional<Kept> callOff();
    /// Takes back a `callOff` that no `keep` has followed.
    void resume(std::optional<Kept> calledOff);

    /// The paste that waits; nullopt if none does.
    std::optional<Last> last();

    /// The texts to put back, once; nullopt if that paste was called off.
    std::optional<PasteboardTexts> take(Ticket ticket);

  private:
    std::mutex mutex_;
    Ticket last_ = 0;           // under mutex_
    std::optional<Kept> kept_;  // under mutex_
};

}  // namespace parlivo
