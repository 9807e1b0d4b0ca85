// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/GnomeHotKeys.h"

#include "platform/linux/desktop/NullDesktop.h"

#include <QCoreApplication>

#include <utility>

namespace parlivo::gnome {

GnomeHotKeys::GnomeHotKeys(QDBusConnection bus, portal::PortalDesktop desktop)
    : bus_(std::move(bus)),
      portal_(std::make_unique<portal::PortalHotKeyService>(std::move(desktop), [this] { leavePortal(); })) {
    listen();
}

GnomeHotKeys::~GnomeHotKeys() = default;

HotKeyService& GnomeHotKeys::way() const {
    if (portal_) return *portal_;
    if (bound_) return *bound_;
    return *none_;
}

void GnomeHotKeys::listen() {
    handler_ =
        way().installHandler([this] { edges_.press(); }, [this] { edges_.release(); },
                             [this](const std::optional<HotKeyRefusal>& change) { edges_.tell(change); });
}

void GnomeHotKeys::leavePortal() {
    handler_.reset();
    portal_.release()->deleteLater();  // it is what calls this
    if (BoundHotKeyService::isOffered(bus_))
        bound_ = std::make_unique<BoundHotKeyService>(bus_);
    else
        none_ = std::make_unique<NullHotKeyService>(Edges::None);
    listen();
    if (!wanted_) return;
    auto result = way().registerHotKey(wanted_->key, wanted_->modifiers, *identity_);
    const auto* const refusal = std::get_if<HotKeyRefusal>(&result);
    if (!refusal) registration_ = std::get<std::unique_ptr<HotKeyRegistration>>(std::move(result));
    edges_.tell(refusal && bound_ ? std::optional(*refusal) : std::nullopt);
}

std::unique_ptr<HotKeyHandler> GnomeHotKeys::installHandler(Edge pressed, Edge released, Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result GnomeHotKeys::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                   HotKeyIdentity identity) {
    if (!identity_) identity_ = identity;
    if (identity == *identity_) wanted_ = Combination{key, modifiers};
    return way().registerHotKey(key, modifiers, identity);
}

std::optional<KeyCode> GnomeHotKeys::keyCodeOf(std::uint32_t nativeScanCode) const {
    return way().keyCodeOf(nativeScanCode);
}

QString GnomeHotKeys::name() const {
    if (portal_) return QCoreApplication::translate("parlivo::GnomeHotKeys", "tasto globale del portale");
    if (bound_)
        return QCoreApplication::translate("parlivo::GnomeHotKeys", "scorciatoia personalizzata di GNOME");
    return {};
}

std::vector<SessionHint> GnomeHotKeys::hints() {
    if (portal_) return portal_->hints();
    if (bound_) return bound_->hints();
    return {};
}

}  // namespace parlivo::gnome
