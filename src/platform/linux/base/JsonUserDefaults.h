// SPDX-License-Identifier: MIT
#pragma once

#include "platform/UserDefaults.h"

#include <QVariantMap>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

class QSettings;

namespace parlivo {

/// The settings in one JSON object (RFC 8259) in a file of mode 0600, through QSettings, which notices
/// changes made by others, merges ours into them and replaces the file atomically.
///
/// A change is in force at once; a thread of its own writes it, since a write waits for the disk twice (10 to
/// 40 ms). Nobody who reads waits for that: as long as it lasts, readers get what the file held before. What
/// cannot be written stays in force, and is tried again with the next change and at the end.
///
/// A file that is no JSON object is kept aside as "<file>.broken" and reading goes on with nothing stored.
class JsonUserDefaults : public UserDefaults {
  public:
    /// Told of a store that cannot be read or written; any thread.
    using Complaint = std::function<void(const QString&)>;

    /// How long a change waits for others that follow, to be written with them.
    static constexpr std::chrono::milliseconds usualDelay{500};

    JsonUserDefaults(QString file, Complaint complaint, std::chrono::milliseconds delay = usualDelay);
    /// Writes what is not written yet.
    ~JsonUserDefaults() override;
    JsonUserDefaults(const JsonUserDefaults&) = delete;
    JsonUserDefaults& operator=(const JsonUserDefaults&) = delete;

    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;
    void remove(const QString& key) override;
    void flush() override;

  private:
    struct Change {
        std::optional<QVariant> value;  ///< nullopt if the key is removed
        std::uint64_t number = 0;       ///< its place in the order of all changes
    };
    using Changes = std::map<QString, Change>;

    void note(const QString& key, std::optional<QVariant> value);
    void writeBehind(const std::stop_token& stop);
    /// Whether the file has them all now. Under writeMutex_.
    bool write(const Changes& changes);
    /// The file is read under stateMutex_, and only while nobody writes: QSettings blocks readers of a file
    /// that it is writing.
    QVariantMap readAll() const;
    void setAsideIfBroken(const QSettings& settings) const;

    const QString file_;
    const Complaint complaint_;
    const std::chrono::milliseconds delay_;

    /// One write at a time. Taken before stateMutex_.
    std::mutex writeMutex_;
    /// Whether what killed programs left beside the file is gone; it goes before the first write.
    bool tidied_ = false;  // under writeMutex_

    mutable std::mutex stateMutex_;  // never held during a write
    /// What the file held when the write began that is under way now; nullopt if there is none.
    std::optional<QVariantMap> beforeWrite_;  // under stateMutex_
    Changes changes_;                         // those that the file does not have yet; under stateMutex_
    std::uint64_t lastNumber_ = 0;            // under stateMutex_
    bool due_ = false;                        // whether the thread has something to do; under stateMutex_
    std::condition_variable_any noted_;
    std::jthread writer_;  // runs from the first change on; under stateMutex_
};

}  // namespace parlivo
