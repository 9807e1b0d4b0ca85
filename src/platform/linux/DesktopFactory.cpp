// SPDX-License-Identifier: MIT
#include "platform/linux/DesktopFactory.h"

#include "platform/linux/base/XdgDirectories.h"
#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/gnome/BoundHotKeyService.h"
#include "platform/linux/gnome/GnomePortal.h"
#include "platform/linux/gnome/RemoteKeys.h"
#include "platform/linux/gnome/RemotePasteboard.h"
#include "platform/linux/kde/KdeHotKeyService.h"
#include "platform/linux/kde/KeyGrant.h"
#include "platform/linux/session/SessionKind.h"
#include "platform/linux/sway/SwayHotKeyService.h"
#include "platform/linux/sway/SwayIpc.h"
#include "platform/linux/wayland/FakeInput.h"
#include "platform/linux/wayland/NoOpKey.h"
#include "platform/linux/wayland/SeatKeymap.h"
#include "platform/linux/wayland/WaylandDesktop.h"
#include "platform/linux/x11/X11Desktop.h"

#include <QCoreApplication>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::DesktopFactory)
};

/// Does nothing where the compositor does not let programs press keys.
std::function<void()> tapNoOpKey() {
    const std::shared_ptr<wayland::NoOpKey> key = wayland::NoOpKey::make();
    return [key] {
        if (key) key->tap();
    };
}

/// Does nothing where KWin does not let this program press keys.
kde::KdeHotKeyService::NoOpKey heldNoOpKey() {
    const std::shared_ptr<wayland::NoOpKey> key = wayland::NoOpKey::make();
    if (!key) return {};
    return {.press = [key] { key->move(wayland::ChordKeys::Edge::Press); },
            .release = [key] { key->move(wayland::ChordKeys::Edge::Release); }};
}

/// Empty once KWin lets this program press keys.
std::function<std::vector<SessionHint>()> kdeHints() {
    const auto connection = wayland::WaylandConnection::open();
    if (!connection || wayland::FakeInput::isOffered(*connection)) return nullptr;
    const kde::KeyGrant grant(QCoreApplication::applicationFilePath(),
                              XdgDirectories().applicationSupport() + QStringLiteral("/applications"));
    return [grant] { return grant.hints(); };
}

/// With a service that has hints.
template <typename Service>
HotKeyWay wayOf(std::unique_ptr<Service> service, const QString& name) {
    const auto hints = [service = service.get()] { return service->hints(); };
    return {std::move(service), name, hints};
}

/// By what answers in the session, not by the desktop's name.
HotKeyWay hotKeyWay() {
    const QString swaySocket = qEnvironmentVariable("SWAYSOCK");
    if (sway::SwayIpc::connect(swaySocket))
        return {
            std::make_unique<sway::SwayHotKeyService>(swaySocket, tapNoOpKey(), wayland::SeatKeymap::open()),
            Texts::tr("tasto globale di sway")};
    if (kde::KdeHotKeyService::isOffered())
        return {std::make_unique<kde::KdeHotKeyService>(wayland::SeatKeymap::open(), heldNoOpKey()),
                Texts::tr("tasto globale di KDE"), kdeHints()};
    if (gnome::hasPortalKeys()) {
        if (auto way = wayOf(portal::PortalHotKeyService::open(gnome::portalDesktop()),
                             Texts::tr("tasto globale del portale"));
            way.service)
            return way;
    }
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (gnome::BoundHotKeyService::isOffered(bus))
        return wayOf(std::make_unique<gnome::BoundHotKeyService>(bus),
                     Texts::tr("scorciatoia personalizzata di GNOME"));
    return {};
}

PasteWay pasteWay() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!gnome::RemoteSession::isOffered(bus)) return {};
    const auto desktop = std::make_shared<gnome::RemoteDesktop>(bus);
    return {std::make_unique<gnome::RemoteKeys>(desktop), std::make_unique<gnome::RemotePasteboard>(desktop),
            Texts::tr("incolla per mezzo di GNOME")};
}

}  // namespace

std::unique_ptr<Desktop> makeDesktop() {
    const SessionChoice session = currentSession();
    switch (session.kind) {
        case SessionKind::X11:
            return std::make_unique<X11Desktop>();
        case SessionKind::Wayland:
            return std::make_unique<WaylandDesktop>(OwnWays{.findHotKey = hotKeyWay, .findPaste = pasteWay});
        case SessionKind::None:
            break;
    }
    return std::make_unique<NullDesktop>(session.reason);
}

}  // namespace parlivo
