// SPDX-License-Identifier: MIT
#include "platform/linux/base/XdgDirectories.h"

#include <QDir>
#include <QFile>

#include <pwd.h>
#include <unistd.h>

namespace parlivo {

namespace {

QString absolute(const char* variable) {
    const QString path = QFile::decodeName(qgetenv(variable));
    return QDir::isAbsolutePath(path) ? QDir::cleanPath(path) : QString();
}

/// A session without HOME (a bare service) still has a home in the user database; and if not even that, its
/// files must not land in the root folder.
QString homeFolder() {
    QString path = absolute("HOME");
    if (!path.isEmpty()) return path;
    if (const passwd* user = getpwuid(getuid())) path = QFile::decodeName(user->pw_dir);
    return QDir::isAbsolutePath(path) ? path : QDir::tempPath();
}

QString baseFolder(const char* variable, const QString& belowHome) {
    const QString path = absolute(variable);
    return path.isEmpty() ? homeFolder() + belowHome : path;
}

}  // namespace

QString XdgDirectories::applicationSupport() const {
    return baseFolder("XDG_DATA_HOME", QStringLiteral("/.local/share"));
}

QString XdgDirectories::logs() const {
    return baseFolder("XDG_STATE_HOME", QStringLiteral("/.local/state")) + QStringLiteral("/Parlivo");
}

QString XdgDirectories::home() const {
    return homeFolder();
}

QString XdgDirectories::temporary() const {
    return QDir::tempPath();
}

QString XdgDirectories::configurationHome() {
    return baseFolder("XDG_CONFIG_HOME", QStringLiteral("/.config"));
}

QString XdgDirectories::configuration() {
    return configurationHome() + QStringLiteral("/Parlivo");
}

QString XdgDirectories::runtime() {
    return absolute("XDG_RUNTIME_DIR");
}

}  // namespace parlivo
