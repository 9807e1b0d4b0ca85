// SPDX-License-Identifier: MIT
#pragma once

#include "platform/BundleTools.h"

namespace parlivo {

/// ditto, which unpacks a bundle with all that belongs to it, rsync and, by way of a shell, open.
class MacBundleTools : public BundleTools {
  public:
    /// Absolute paths of the tools.
    struct Paths {
        QString ditto = QStringLiteral("/usr/bin/ditto");
        QString rsync = QStringLiteral("/usr/bin/rsync");
        QString shell = QStringLiteral("/bin/sh");
        QString open = QStringLiteral("/usr/bin/open");
    };

    MacBundleTools() = default;
    explicit MacBundleTools(Paths paths) : paths_(std::move(paths)) {}

    /// The temporary folder does: rsync copies from wherever it is.
    std::optional<QString> stagingPlace(const QString& bundle) const override;
    Outcome unpack(const QString& archive, const QString& folder, qint64 maximumSize) override;
    std::optional<QString> shortVersion(const QString& bundle) const override;
    /// Waits for the end of the copying whatever happens, since half a copy would not start: never GoesOn.
    Replacement replace(const QString& source, const QString& destination) override;
    void startAfterEnd(const QString& bundle) override;

  private:
    const Paths paths_{};
};

}  // namespace parlivo
