// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QObject>
#include <QString>

#include <optional>

namespace parlivo {

/// Whether the hot key works, for every window that tells the user. Main thread.
class HotKeyStatus : public QObject {
    Q_OBJECT

  public:
    /// The one of the process.
    static HotKeyStatus& shared();

    /// What the user is told while the chosen combination is refused;
    /// nullopt while it works.
    std::optional<QString> warning() const;
    enum class Verdict {
        Free,
        Taken,     ///< another program holds it
        Unusable,  ///< it would take a key from typing, or this keyboard has no such key
    };
    /// Whether a combination can be had, by trying for a moment.
    Verdict verdictOn(KeyCode key, HotKeyModifiers modifiers) const;

    /// The user sees the warning, or the choice, now: a combination that is refused is tried again.
    void look() { Q_EMIT lookedAt(); }

    /// By the hot key's manager.
    void set(const std::optional<HotKeyRefusal>& refusal);

  Q_SIGNALS:
    /// The warning became another one, or another combination is in force.
    void changed();
    void lookedAt();

  private:
    HotKeyStatus() = default;

    std::optional<HotKeyRefusal> refusal_;
};

}  // namespace parlivo
