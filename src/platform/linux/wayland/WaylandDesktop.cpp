#include "platform/linux/wayland/WaylandDesktop.h"

#include <QDir>
#include <QLibraryInfo>

namespace parlivo {

namespace {

bool toolkitSpeaksWayland() {
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    return !plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty();
}

/// The toolkit may show its windows on the X server that most compositors bring along.
bool hasXServer() {
    return !qEnvironmentVariableIsEmpty("DISPLAY");
}

}  // namespace

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
