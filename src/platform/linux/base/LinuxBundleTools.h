// SPDX-License-Identifier: MIT
#pragma once

#include "platform/BundleTools.h"

#include <utility>

namespace parlivo {

/// libarchive, renameat2(2), rsync(1) and the shell.
class LinuxBundleTools : public BundleTools {
  public:
    /// Where the tools are; a test puts others in their place.
    struct Paths {
        QString rsync = QStringLiteral("/usr/bin/rsync");
        QString shell = QStringLiteral("/bin/sh");
    };

    LinuxBundleTools() : LinuxBundleTools(Paths()) {}
    explicit LinuxBundleTools(Paths paths) : paths_(std::move(paths)) {}

    /// The folder that holds the bundle, so that the two can be exchanged; nullopt if the user cannot write
    /// there.
    std::optional<QString> stagingPlace(const QString& bundle) const override;
    Outcome unpack(const QString& archive, const QString& folder, qint64 maximumSize) override;
    std::optional<QString> shortVersion(const QString& bundle) const override;
    /// Exchanges the two in one step, so that at every moment there is one whole bundle. Where the file
    /// system or the permissions do not allow that, rsync copies one over the other: it goes on when this
    /// program is killed, and what it has received takes its place only when all of it has arrived.
    Replacement replace(const QString& source, const QString& destination) override;
    void startAfterEnd(const QString& bundle) override;

  private:
    const Paths paths_;
};

}  // namespace parlivo
