// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVariant>

namespace parlivo {

/// The user's settings: key -> value with its own type. Any thread; nothing is cached, so a change made by
/// hand counts at the next read. Unknown keys survive every write.
///
/// A change counts at the next read, and is on the disk within a second, even if the program is killed then.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The stored value (bool, integer, double, string, date; a store without a type for dates gives them as
    /// strings in ISO 8601, UTC), or an invalid variant when the key was never written or the store cannot
    /// be read.
    virtual QVariant value(const QString& key) const = 0;
    /// Stores a value. A failure is reported by the store in the system log, never to the caller.
    virtual void setValue(const QString& key, const QVariant& value) = 0;
    virtual void remove(const QString& key) = 0;
    /// Returns when all changes are on the disk; for a store that sees to that itself, at once.
    virtual void flush() {}
};

}  // namespace parlivo
