// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace parlivo {

/// Whether the session says that it is one of this desktop environment.
/// https://specifications.freedesktop.org/desktop-entry-spec (XDG_CURRENT_DESKTOP)
inline bool currentDesktopIs(const char* name) {
    return qEnvironmentVariable("XDG_CURRENT_DESKTOP")
        .split(QLatin1Char(':'))
        .contains(QLatin1String(name), Qt::CaseInsensitive);
}

}  // namespace parlivo
