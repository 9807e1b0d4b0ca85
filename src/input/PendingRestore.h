#pragma once

#include "platform/Pasteboard.h"

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
    };

    /// Keeps what a paste of `pasted` displaces. A place that still holds the text of an earlier paste, one
    /// whose restore was called off, holds nothing of the user's: there the earlier paste's text counts.
    Ticket keep(const QString& pasted, PasteboardTexts present, const std::optional<Kept>& calledOff);

    /// Ends the wait of the last paste, if it still waits, and gives what it kept.
    std::optional<Kept> callOff();

    /// The texts to put back, once; nullopt if that paste was called off.
    std::optional<PasteboardTexts> take(Ticket ticket);

  private:
    std::mutex mutex_;
    Ticket last_ = 0;           // under mutex_
    std::optional<Kept> kept_;  // under mutex_
};

}  // namespace parlivo
