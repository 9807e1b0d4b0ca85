#pragma once

#include "platform/UserDefaults.h"

#include <functional>
#include <mutex>

class QSettings;

namespace parlivo {

/// The settings in one JSON object (RFC 8259) in a file of mode 0600, through QSettings, which notices
/// changes made by others, merges ours into them and replaces the file atomically.
///
/// A file that is no JSON object is kept aside as "<file>.broken" and reading goes on with nothing stored.
class JsonUserDefaults : public UserDefaults {
  public:
    /// Told of a store that cannot be read or written; any thread.
    using Complaint = std::function<void(const QString&)>;

    JsonUserDefaults(QString file, Complaint complaint);

    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;

  private:
    void setAsideIfBroken(const QSettings& settings) const;
    void write(const std::function<void(QSettings&)>& change) const;

    const QString file_;
    const Complaint complaint_;
    /// Whether what killed programs left beside the file is gone; it goes before the first write.
    mutable bool tidied_ = false;  // under mutex_
    /// QSettings is thread-safe by itself; this keeps "set the broken file aside" and a write from
    /// interleaving.
    mutable std::mutex mutex_;
};

}  // namespace parlivo
