// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace parlivo::bench {

/// Notes when the files of a folder are closed after writing and when they are deleted (inotify(7)), on a
/// thread of its own.
class FileEvents {
  public:
    enum class Kind { Closed, Deleted };

    explicit FileEvents(const QString& folder);
    ~FileEvents();
    FileEvents(const FileEvents&) = delete;
    FileEvents& operator=(const FileEvents&) = delete;

    /// When that first happened, since `begin`, to a file whose name ends so; nullopt if it did not.
    std::optional<std::chrono::steady_clock::time_point> first(
        Kind kind, const char* suffix, std::chrono::steady_clock::time_point begin) const;

  private:
    struct Event {
        Kind kind;
        QByteArray name;
        std::chrono::steady_clock::time_point moment;
    };

    void read();

    int notifier_ = -1;
    int end_ = -1;  // an eventfd that ends the thread
    mutable std::mutex mutex_;
    std::vector<Event> events_;  // under mutex_
    std::thread thread_;
};

}  // namespace parlivo::bench
