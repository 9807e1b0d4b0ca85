// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace parlivo {

/// The mode of what other users of the machine must not read: recordings, settings, texts, the log.
inline constexpr unsigned ownerOnlyMode = 0600;
/// The same as Qt says it.
inline constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

/// Puts a file with this content and for the user alone in the place of `path`, whole or not at all. False if
/// it cannot be written; what stood there is then unchanged. Any thread.
bool replaceOwnerOnlyFile(const QString& path, const QByteArray& content);

}  // namespace parlivo
