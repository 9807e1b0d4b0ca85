// SPDX-License-Identifier: MIT
#include "platform/linux/session/SessionKind.h"

#include "platform/linux/base/XdgDirectories.h"
#include "support/UniqueFd.h"

#include <QCoreApplication>
#include <QFile>

#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/xcb.h>

#include <memory>
#include <string>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::SessionKind)
};

SessionChoice none(const QString& reason) {
    return {SessionKind::None, reason};
}

SessionChoice onlyX11(const DisplayServers& servers) {
    if (servers.x11()) return {SessionKind::X11, {}};
    return none(Texts::tr("nessuno schermo: serve una sessione grafica X11 (variabile DISPLAY)"));
}

SessionChoice onlyWayland(const DisplayServers& servers) {
    if (servers.wayland()) return {SessionKind::Wayland, {}};
    return none(Texts::tr("nessuno schermo: serve una sessione grafica Wayland (variabile WAYLAND_DISPLAY)"));
}

SessionChoice whatAnswers(const DisplayServers& servers) {
    if (servers.wayland()) return {SessionKind::Wayland, {}};
    if (servers.x11()) return {SessionKind::X11, {}};
    return none(Texts::tr(
        "nessuno schermo: serve una sessione grafica X11 o Wayland (variabile DISPLAY o WAYLAND_DISPLAY)"));
}

bool x11Answers() {
    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    return xcb_connection_has_error(connection.get()) == 0;
}

/// Empty when the session names none.
QString waylandSocket() {
    QString name = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (name.isEmpty() && qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland"))
        name = QStringLiteral("wayland-0");
    if (name.isEmpty() || name.startsWith(QLatin1Char('/'))) return name;
    return XdgDirectories::runtime() + QLatin1Char('/') + name;
}

}  // namespace

SessionChoice chooseSession(const QString& wanted, const DisplayServers& servers) {
    if (wanted.isEmpty()) return whatAnswers(servers);
    if (wanted == QLatin1String("x11")) return onlyX11(servers);
    if (wanted == QLatin1String("wayland")) return onlyWayland(servers);
    if (wanted == QLatin1String("none")) return none(Texts::tr("nessuno schermo: PARLIVO_PLATFORM=none"));
    return none(Texts::tr("PARLIVO_PLATFORM=%1: valore sconosciuto (x11, wayland o none)").arg(wanted));
}

SessionChoice currentSession() {
    return chooseSession(qEnvironmentVariable("PARLIVO_PLATFORM"), {x11Answers, waylandAnswers});
}

bool waylandAnswers() {
    const std::string path = QFile::encodeName(waylandSocket()).toStdString();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return false;
    path.copy(static_cast<char*>(address.sun_path), path.size());
    const UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket && connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace parlivo
