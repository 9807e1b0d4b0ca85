// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace parlivo {

/// The system's own means with which the program replaces itself by a newer version. All operations but
/// startAfterEnd() block, so not on the main thread.
class BundleTools {
  public:
    enum class Outcome { Done, Failed };
    enum class Replacement {
        Done,
        Failed,
        /// The program's end cut the wait short: a tool goes on by itself, and needs the source until it has
        /// finished. The folder that holds the source is locked (support/FileLock) as long as that lasts.
        GoesOn,
    };

    virtual ~BundleTools() = default;

    /// The existing folder in which a version that is to replace `bundle` is best unpacked; nullopt if the
    /// one for temporary files is as good as any.
    virtual std::optional<QString> stagingPlace(const QString& bundle) const = 0;
    /// Unpacks a zip archive into an existing, empty folder. Fails if the archive is damaged, would write
    /// outside the folder, or has more than `maximumSize` bytes of contents. Throws Error if a tool cannot be
    /// started.
    virtual Outcome unpack(const QString& archive, const QString& folder, qint64 maximumSize) = 0;
    /// "CFBundleShortVersionString" of a bundle's Contents/Info.plist; nullopt if there is none.
    virtual std::optional<QString> shortVersion(const QString& bundle) const = 0;
    /// Puts the bundle `source` in the place of the bundle `destination`; what only `destination` has is gone
    /// then. `source` is used up. Throws as unpack() does.
    virtual Replacement replace(const QString& source, const QString& destination) = 0;
    /// Sees to it that the bundle's program starts once this one has ended, however that comes about. Returns
    /// at once and never fails; the caller ends the program. Main thread.
    virtual void startAfterEnd(const QString& bundle) = 0;
};

}  // namespace parlivo
