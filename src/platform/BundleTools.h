#pragma once

#include <QString>

namespace parlivo {

/// The system's own tools with which the program replaces itself by a newer one.
class BundleTools {
  public:
    enum class Outcome { Done, Failed };

    virtual ~BundleTools() = default;

    /// Unpacks a zip archive into an existing folder. Blocks, so not on the main thread. Throws Error when
    /// the tool cannot be started.
    virtual Outcome unpack(const QString& archive, const QString& folder) = 0;
    /// Makes the contents of the folder `destination` the same as those of `source`, in place; what only
    /// `destination` has is deleted. A failure may leave some of it done. Blocks and throws as above.
    virtual Outcome mirror(const QString& source, const QString& destination) = 0;
    /// Sees to it that the bundle's program starts once this one has ended, however that comes about. Returns
    /// at once and never fails; the caller ends the program. Main thread.
    virtual void startAfterEnd(const QString& bundle) = 0;
};

}  // namespace parlivo
