#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace parlivo {

/// The names of an archive's entries as its central directory has them
/// (https://pkware.cachefly.net/webdocs/casestudies/APPNOTE.TXT, 4.3.12 and 4.3.16). Nothing when the file is
/// no zip archive that this understands: unreadable, damaged, or of more than 4 GB or 65534 entries.
std::optional<std::vector<QByteArray>> zipNames(const QString& archive);

/// Whether an entry of that name lands inside the folder that its archive is unpacked into.
bool staysInFolder(const QByteArray& name);

}  // namespace parlivo
