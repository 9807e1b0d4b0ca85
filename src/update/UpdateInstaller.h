#pragma once

#include <QString>

namespace parlivo {

/// Puts the bundle in a downloaded archive in the place of the running one.
///
/// Blocks, so not on the main thread. Throws Error UpdateCorrupted when the archive has not exactly
/// `expectedSize` bytes, UpdateExtractionFailed (also when it holds more than 4 times the running bundle's
/// bytes plus 64 MB), UpdateBundleInvalid, UpdateReplacementFailed, or the system's own; until the replacing
/// has begun the running bundle is untouched. Nothing unpacked is left anywhere, unless the program's end
/// came before the system's tools had finished: then they finish by themselves.
void installUpdate(const QString& archive, qint64 expectedSize);

/// Deletes the archives and unpacked bundles that killed programs of this user's left among the temporary
/// files and beside the running bundle. Any thread; what is under way, of this program or another, goes on.
void removeUpdateLeftovers();

}  // namespace parlivo
