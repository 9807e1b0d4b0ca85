// SPDX-License-Identifier: MIT
#include "platform/linux/wayland/WaylandDesktop.h"

#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/wayland/DataControlPasteboard.h"
#include "platform/linux/x11/QtPasteboard.h"

#include <QDir>
#include <QLibraryInfo>

namespace parlivo {

namespace {

bool toolkitSpeaksWayland() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty();
}

/// Most compositors bring an X server along, on which the toolkit can show its windows, too.
bool hasXServer() {
    return !qEnvironmentVariableIsEmpty("DISPLAY");
}

/// A compositor without data control takes a new clipboard from the focused window only, but it passes one on
/// that an X11 program sets, focused or not.
std::unique_ptr<Pasteboard> toolkitsPasteboard() {
    if (hasXServer() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        setOwnVariable("QT_QPA_PLATFORM", "xcb");
    return std::make_unique<QtPasteboard>();
}

}  // namespace

WaylandDesktop::WaylandDesktop() : pasteboard_(wayland::DataControlPasteboard::open()) {
    if (!pasteboard_) pasteboard_ = toolkitsPasteboard();
}

std::optional<QString> WaylandDesktop::startProblem() {
    if (toolkitSpeaksWayland() || hasXServer()) return std::nullopt;
    return QStringLiteral(
        "le finestre non possono essere mostrate in questa sessione Wayland: manca il plugin "
        "di Qt per Wayland (pacchetto qt6-wayland)");
}

QString WaylandDesktop::summary() {
    return QStringLiteral("Wayland: nessun tasto globale, testo negli appunti, nessun pannello");
}

}  // namespace parlivo
