// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace parlivo {

/// A file in the making, beside the place it is meant for, under a name that no other has, and claimed
/// (FileLock). It goes with this object unless it was moved to a place. One thread at a time.
class DownloadFile {
  public:
    /// Touches nothing yet.
    explicit DownloadFile(const QString& destination);
    ~DownloadFile();
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    /// Writes all of it. Throws Error (domain "POSIX").
    void append(QByteArrayView bytes);
    /// As the file system has it, in bytes. Throws Error.
    qint64 size();
    /// The room that the file system has for more, in bytes; nullopt if it does not say. Throws Error.
    std::optional<qint64> freeSpace();
    /// Waits until the bytes are on the disk and replaces what is at `place`, which may be on another file
    /// system. May be called again for another place. Throws Error.
    void moveTo(const QString& place);

    /// Deletes from a folder what programs that were killed left there.
    static void removeStaleFiles(const QString& folder);

  private:
    void open();
    [[noreturn]] void fail() const;

    void copyTo(const QString& place);

    QString path_;  ///< where the file is
    const QString name_;
    const QString temporary_;
    UniqueFd descriptor_;
};

}  // namespace parlivo
