// SPDX-License-Identifier: MIT
#pragma once

#include "platform/BundleTools.h"

#include <QString>

#include <chrono>

/// The two ways in which one folder takes the place of another. They block, so not on the main thread.
namespace parlivo {

/// Exchanges two folders of one file system in one step (renameat2(2), RENAME_EXCHANGE). What `first` holds
/// is on the disk before, so that not even a power cut leaves a folder with empty files. False, with both as
/// they were, if the file system or the permissions do not allow it.
[[nodiscard]] bool exchangeFolders(const QString& first, const QString& second);

/// Makes the contents of `destination` the same as those of `source` with the given rsync(1).
///
/// The tool is tied neither to this process nor to its terminal, so that killing the program does not stop it
/// half-way; it holds a lock on the folder that holds `source` (support/FileLock) until it has ended. Throws
/// Error::system if it cannot be started.
BundleTools::Replacement copyOver(const QString& rsync, const QString& source, const QString& destination);

/// How long the program's end waits for copyOver(). A stated time, which Clock scales.
constexpr std::chrono::seconds copyTimeout{30};

}  // namespace parlivo
