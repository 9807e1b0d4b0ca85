// SPDX-License-Identifier: MIT
#pragma once

#include <QProcessEnvironment>

namespace parlivo::desktop {

/// For a program that has the Wayland session to run in, and no way back to X11.
inline QProcessEnvironment waylandEnvironment() {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

}  // namespace parlivo::desktop
