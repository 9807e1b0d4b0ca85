// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"
#include "platform/SessionHint.h"
#include "platform/linux/desktop/HotKeyEdges.h"
#include "platform/linux/gnome/BoundHotKeyService.h"
#include "platform/linux/portal/PortalHotKeyService.h"

#include <QDBusConnection>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace parlivo::gnome {

/// The hot key of a GNOME that has a portal for it (48 and later): by the portal, or, once that has said that
/// it has none for this program, by the desktop's own list of key combinations, or not at all where that is
/// not served either. The portal is taken to have some until it has answered, for which nobody waits.
class GnomeHotKeys : public HotKeyService {
  public:
    GnomeHotKeys(QDBusConnection bus, portal::PortalDesktop desktop);
    ~GnomeHotKeys() override;
    GnomeHotKeys(const GnomeHotKeys&) = delete;
    GnomeHotKeys& operator=(const GnomeHotKeys&) = delete;

    std::unique_ptr<HotKeyHandler> installHandler(Edge pressed, Edge released, Change changed) override;
    Result registerHotKey(KeyCode key, HotKeyModifiers modifiers, HotKeyIdentity identity) override;
    Edges edges() const override { return way().edges(); }
    Contention contention() const override { return way().contention(); }
    std::optional<KeyCode> keyCodeOf(std::uint32_t nativeScanCode) const override;

    /// Of the present way, in Italian; empty without one.
    QString name() const;
    std::vector<SessionHint> hints();

  private:
    struct Combination {
        KeyCode key = 0;
        HotKeyModifiers modifiers = 0;
    };

    HotKeyService& way() const;
    void listen();
    void leavePortal();

    QDBusConnection bus_;
    HotKeyEdges edges_;
    std::unique_ptr<portal::PortalHotKeyService> portal_;  // null once it has none
    std::unique_ptr<BoundHotKeyService> bound_;            // in its place
    std::unique_ptr<HotKeyService> none_;                  // where neither is
    std::unique_ptr<HotKeyHandler> handler_;               // of the present way
    std::optional<HotKeyIdentity> identity_;               // of the hot key; others are trials
    std::optional<Combination> wanted_;
    std::unique_ptr<HotKeyRegistration> registration_;  // made when the portal was left
};

}  // namespace parlivo::gnome
