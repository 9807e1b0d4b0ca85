#pragma once

#include "platform/BundleTools.h"

#include <utility>

namespace parlivo {

/// unzip(1), rsync(1) and the shell.
class LinuxBundleTools : public BundleTools {
  public:
    /// Where the tools are; a test puts others in their place.
    struct Paths {
        QString unzip = QStringLiteral("/usr/bin/unzip");
        QString rsync = QStringLiteral("/usr/bin/rsync");
        QString shell = QStringLiteral("/bin/sh");
    };

    LinuxBundleTools() : LinuxBundleTools(Paths()) {}
    explicit LinuxBundleTools(Paths paths) : paths_(std::move(paths)) {}

    Outcome unpack(const QString& archive, const QString& folder) override;
    Outcome mirror(const QString& source, const QString& destination) override;
    void startAfterEnd(const QString& bundle) override;

  private:
    const Paths paths_;
};

}  // namespace parlivo
