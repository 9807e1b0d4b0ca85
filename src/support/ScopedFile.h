// SPDX-License-Identifier: MIT
#pragma once

#include "support/FileLock.h"

#include <QFile>
#include <QString>

#include <optional>
#include <utility>

namespace parlivo {

/// A temporary file that is deleted when nobody needs it any more, however that comes about, and is
/// locked until then. Errors of the deletion are ignored.
class ScopedFile {
  public:
    /// Locks the file if it exists.
    explicit ScopedFile(QString path) : path_(std::move(path)) { lock(); }
    ~ScopedFile() { remove(); }
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    const QString& path() const { return path_; }
    /// Locks a file that was made since.
    void lock() { lock_ = FileLock::acquire(path_); }
    void remove() {
        QFile::remove(path_);
        // The system keeps the contents as long as somebody has the file open.
        lock_.reset();
    }

  private:
    const QString path_;
    std::optional<FileLock> lock_;
};

}  // namespace parlivo
