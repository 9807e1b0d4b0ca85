// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

namespace parlivo {

/// The kind of graphical session that the program runs in.
enum class SessionKind { X11, Wayland, None };

struct SessionChoice {
    SessionKind kind = SessionKind::None;
    /// Why there is none, in Italian.
    QString reason;
};

/// Whether a display server answers; asked when the answer matters.
struct DisplayServers {
    std::function<bool()> x11;
    std::function<bool()> wayland;
};

/// Chooses the session. `wanted` is the value of PARLIVO_PLATFORM: "x11", "wayland" or "none"; empty lets the
/// servers decide. A Wayland compositor comes first, because the X server beside it reaches X11 windows only.
SessionChoice chooseSession(const QString& wanted, const DisplayServers& servers);

/// The same for the session of this process.
SessionChoice currentSession();

/// Whether a Wayland compositor accepts connections (variables WAYLAND_DISPLAY, XDG_RUNTIME_DIR).
bool waylandAnswers();

}  // namespace parlivo
