// SPDX-License-Identifier: MIT
#pragma once

#include "support/FileLock.h"

#include <QString>

#include <optional>

namespace parlivo {

/// A temporary file that is deleted when nobody needs it any more, however that comes about, and is
/// locked until then. Errors of the deletion are ignored.
class ScopedFile {
  public:
    /// Locks the file if it exists.
    explicit ScopedFile(QString path);
    ~ScopedFile();
    ScopedFile(const ScopedFile&) = delete;
    ScopedFile& operator=(const ScopedFile&) = delete;

    const QString& path() const { return path_; }
    /// Locks a file that was made since.
    void lock();
    void remove();

  private:
    const QString path_;
    std::optional<FileLock> lock_;
};

}  // namespace parlivo
