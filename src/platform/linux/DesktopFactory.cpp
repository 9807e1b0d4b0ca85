// SPDX-License-Identifier: MIT
#include "platform/linux/DesktopFactory.h"

#include "platform/linux/base/XdgDirectories.h"
#include "platform/linux/desktop/NullDesktop.h"
#include "platform/linux/gnome/BoundHotKeyService.h"
#include "platform/linux/gnome/GnomeHotKeys.h"
#include "platform/linux/gnome/GnomePortal.h"
#include "platform/linux/gnome/RemoteKeys.h"
#include "platform/linux/gnome/RemotePasteboard.h"
#include "platform/linux/kde/KdeHotKeyService.h"
#include "platform/linux/kde/KeyGrant.h"
#include "platform/linux/session/SessionKind.h"
#include "platform/linux/sway/SwayHotKeyService.h"
#include "platform/linux/sway/SwayIpc.h"
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

/// Does nothing as long as KWin does not let this program press keys; asked anew at each press until it does.
kde::KdeHotKeyService::NoOpKey heldNoOpKey() {
    const auto key = std::make_shared<std::unique_ptr<wayland::NoOpKey>>(wayland::NoOpKey::make());
    return {.press =
                [key] {
                    if (*key && (*key)->move(wayland::ChordKeys::Edge::Press)) return;
                    *key = wayland::NoOpKey::make();
                    if (*key) (*key)->move(wayland::ChordKeys::Edge::Press);
                },
            .release =
                [key] {
                    if (*key) (*key)->move(wayland::ChordKeys::Edge::Release);
                }};
}

std::vector<SessionHint> kdeHints() {
    const kde::KeyGrant grant(QCoreApplication::applicationFilePath(),
                              XdgDirectories().applicationSupport() + QStringLiteral("/applications"));
    return grant.hints();
}

/// By what answers in the session, not by the desktop's name.
HotKeyWay hotKeyWay() {
    const QString swaySocket = qEnvironmentVariable("SWAYSOCK");
    if (sway::SwayIpc::connect(swaySocket))
        return {
            std::make_unique<sway::SwayHotKeyService>(swaySocket, tapNoOpKey(), wayland::SeatKeymap::open()),
            [] { return Texts::tr("tasto globale di sway"); }};
    if (kde::KdeHotKeyService::isOffered())
        return {std::make_unique<kde::KdeHotKeyService>(wayland::SeatKeymap::open(), heldNoOpKey()),
                [] { return Texts::tr("tasto globale di KDE"); }, kdeHints};
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (gnome::hasPortalKeys()) {
        auto service = std::make_unique<gnome::GnomeHotKeys>(bus, gnome::portalDesktop());
        auto* const keys = service.get();
        return {std::move(service), [keys] { return keys->name(); }, [keys] { return keys->hints(); }};
    }
    if (gnome::BoundHotKeyService::isOffered(bus)) {
        auto service = std::make_unique<gnome::BoundHotKeyService>(bus);
        auto* const keys = service.get();
        return {std::move(service), [] { return Texts::tr("scorciatoia personalizzata di GNOME"); },
                [keys] { return keys->hints(); }};
    }
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
