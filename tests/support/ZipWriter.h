// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

namespace parlivo {

/// An entry of a zip archive, whatever its name and mode: also archives that no tool would make.
struct ZipEntry {
    QByteArray name;
    QByteArray content;
    unsigned mode = 0100644;  ///< st_mode, with the kind of file
    QByteArray extra = {};    ///< extra fields, as they are
};

/// The extra field that gives an entry of this name another one: Info-ZIP's Unicode path, 0x7075.
QByteArray unicodePath(const QByteArray& name, const QByteArray& other);

/// The bytes of an archive with these entries, uncompressed.
QByteArray zipOf(const std::vector<ZipEntry>& entries);

}  // namespace parlivo
