// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace parlivo {

/// Unpacks a zip archive (https://pkware.cachefly.net/webdocs/casestudies/APPNOTE.TXT) into an existing,
/// empty folder that no other user can write to. Names, also non-ASCII ones, are stored in UTF-8 whatever the
/// locale.
///
/// Folders and executable files get the mode 0755, other files 0644; modification times are kept; symbolic
/// links are created as they are, so it is the caller's task to check where they lead.
///
/// False if the archive cannot be read, is damaged, holds anything else than files, folders and symbolic
/// links, names a place outside the folder or the same file twice, passes through a symbolic link, has more
/// than `maximumSize` bytes of contents, cannot be written to the disk, or if the program ends
/// (Clock::interrupted). What had been unpacked until then is left in the folder. Blocks, so not on the main
/// thread.
[[nodiscard]] bool extractZip(const QString& archive, const QString& folder, qint64 maximumSize);

}  // namespace parlivo
