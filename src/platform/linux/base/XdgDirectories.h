#pragma once

#include "platform/Directories.h"

namespace parlivo {

/// freedesktop.org's XDG base directories, version 0.8: a variable that is unset or not absolute means its
/// default below the home folder.
class XdgDirectories : public Directories {
  public:
    QString applicationSupport() const override;
    QString logs() const override;
    QString home() const override;
    QString temporary() const override;

    /// Folder of the settings file.
    static QString configuration();
    /// Folder for sockets and locks of this login; empty when the session has none.
    static QString runtime();
};

}  // namespace parlivo
