#pragma once

#include <QString>

namespace parlivo {

/// Puts the bundle in a downloaded archive in the place of the running one. The archive is used up.
///
/// Blocks, so not on the main thread. Throws Error UpdateCorrupted when the archive has not exactly
/// `expectedSize` bytes, UpdateExtractionFailed, UpdateBundleInvalid, UpdateReplacementFailed, or the
/// system's own; until the replacing has begun the running bundle is untouched. Whatever happens, nothing of
/// it is left among the temporary files.
void installUpdate(const QString& archive, qint64 expectedSize);

/// Deletes the archives and unpacked bundles that killed programs of this user's left among the temporary
/// files. Any thread; what is under way, of this program or another, goes on.
void removeUpdateLeftovers();

}  // namespace parlivo
