// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QProcessEnvironment>
#include <QTemporaryDir>

namespace parlivo::desktop {

/// Makes a session look like one whose desktop grants hot keys by its portal: GNOME's settings are a
/// script's, and nobody else takes hot keys. As long as it lives.
class PortalSession {
  public:
    PortalSession() {
        QFile settings(folder_.filePath(QStringLiteral("gsettings")));
        if (!settings.open(QIODevice::WriteOnly)) qFatal("no temporary file");
        settings.write(
            "#!/bin/sh\n"
            "[ \"$1 $2 $3\" = 'get org.gnome.settings-daemon.global-shortcuts applications' ] && echo '@as []'\n");
        settings.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QProcessEnvironment within(QProcessEnvironment environment) const {
        environment.remove(QStringLiteral("SWAYSOCK"));
        environment.insert(QStringLiteral("PATH"),
                           folder_.path() + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
        return environment;
    }

  private:
    QTemporaryDir folder_;
};

}  // namespace parlivo::desktop
