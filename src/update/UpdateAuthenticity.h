// SPDX-License-Identifier: MIT
#pragma once

#include "update/FeedEntry.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

/// Whether what the site offers is what it says, and comes from those who made this program.
namespace parlivo {

/// An Ed25519 public key (RFC 8032), 32 bytes. One of any other length verifies nothing.
using UpdateKey = QByteArray;

/// The key that was built in (PARLIVO_UPDATE_KEY); nullopt if none was, and updates need no signature.
std::optional<UpdateKey> builtInUpdateKey();

/// What the signature of a feed entry signs: the lines "parlivo-update", version, size (decimal) and SHA-256
/// (lower-case hexadecimal), each ended by a line feed, in UTF-8.
QByteArray signedText(const QString& version, qint64 size, const QByteArray& sha256);

/// Whether an archive may be fetched from `address` by a program whose site is `site`: https from anywhere,
/// http only if the site itself is not on https, and nothing else.
bool isSafeAddress(const QUrl& address, const QUrl& site);

/// Throws Error UpdateCorrupted if the archive has not exactly the entry's size, or not its SHA-256 where the
/// entry states one; with a key also if the entry's signature is missing or does not fit the entry's version
/// and the archive. Throws Error::system if the archive cannot be read. Blocks: the archive is read once.
void checkArchive(const QString& archive, const FeedEntry& entry, const std::optional<UpdateKey>& key);

}  // namespace parlivo
