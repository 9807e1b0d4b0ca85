// SPDX-License-Identifier: MIT
#pragma once

#include "update/UpdateAuthenticity.h"

#include <QString>

namespace parlivo {

/// Puts the bundle in a downloaded archive in the place of the running one, and stores the entry's changelog
/// for it (WhatsNew).
///
/// Blocks, so not on the main thread. Throws Error
///   - UpdateCorrupted if the archive is not the one that the entry, signed with `key` if there is one,
///   offers,
///   - UpdateExtractionFailed if it cannot be unpacked, or holds more than 4 times the running bundle's bytes
///     plus 64 MB,
///   - UpdateBundleInvalid if what it holds cannot be started, or is not of the entry's version, or not newer
///     than the running one,
///   - UpdateReplacementFailed, or the system's own.
/// Until the replacing has begun the running bundle is untouched. Nothing unpacked is left anywhere, unless
/// the program's end came before the system's tools had finished: then they finish by themselves.
void installUpdate(const QString& archive, const FeedEntry& entry, const std::optional<UpdateKey>& key);

/// Deletes the archives and unpacked bundles that killed programs of this user's left among the temporary
/// files and beside the running bundle. Any thread; what is under way, of this program or another, goes on.
void removeStaleUpdates();

}  // namespace parlivo
