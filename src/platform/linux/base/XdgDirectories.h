// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Directories.h"

namespace parlivo {

/// freedesktop.org's XDG base directories, version 0.8: a variable that is unset or not absolute means its
/// default below the home folder.
///
/// Not QStandardPaths, which in Qt 6.4 knows no state folder, takes relative values, and without HOME puts
/// the files into the root folder.
class XdgDirectories : public Directories {
  public:
    QString applicationSupport() const override;
    QString logs() const override;
    QString home() const override;
    QString temporary() const override;

    /// The parent of the programs' configuration folders.
    static QString configurationHome();
    /// Folder of the settings file.
    static QString configuration();
    /// Folder for sockets and locks of this login; empty if the session has none.
    static QString runtime();
};

}  // namespace parlivo
