// SPDX-License-Identifier: MIT
#pragma once

#include "support/UniqueFd.h"

#include <QString>

#include <optional>
#include <utility>

namespace parlivo {

/// A shared lock (flock(2)) on a temporary file or folder. It shows every process that a living one still
/// needs the file; the kernel releases it however the owner ends. Any thread.
class FileLock {
  public:
    /// nullopt if there is no such file or it cannot be opened.
    static std::optional<FileLock> acquire(const QString& path);

  private:
    explicit FileLock(UniqueFd descriptor) : descriptor_(std::move(descriptor)) {}

    UniqueFd descriptor_;
};

/// Makes a new file with these permissions and opens it for reading and writing (O_CLOEXEC). The file is
/// locked for as long as the descriptor, or a copy of it, is open. Owns nothing, with errno set, if that
/// fails, as it does if the file exists already.
UniqueFd createLockedFile(const QString& path, unsigned permissions);

/// Makes a new folder that only the user can enter, and locks it. nullopt, with errno set, if that fails.
std::optional<FileLock> createLockedFolder(const QString& path);

/// Whether a living process has a lock on the file or folder.
bool isLocked(const QString& path);

/// Deletes a regular file, or a folder with all that is in it, if it belongs to this user and no living
/// process has it locked. Everything else stays, and so does what cannot be deleted. Never waits for another
/// process. Whether something was deleted.
bool removeUnlocked(const QString& path);

}  // namespace parlivo
