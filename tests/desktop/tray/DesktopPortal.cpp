// SPDX-License-Identifier: MIT
#include "desktop/tray/DesktopPortal.h"

namespace parlivo::desktop {

namespace {

const auto portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colourScheme = QStringLiteral("color-scheme");

QDBusConnection ownConnection() {
    static int count = 0;
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                         QStringLiteral("portal %1").arg(++count));
}

}  // namespace

DesktopPortal::DesktopPortal(Scheme scheme) : bus_(ownConnection()), scheme_(scheme) {
    bus_.registerObject(portalPath, this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    bus_.registerService(portalName);
}

DesktopPortal::~DesktopPortal() {
    bus_.unregisterService(portalName);
    bus_.unregisterObject(portalPath);
    QDBusConnection::disconnectFromBus(bus_.name());
}

void DesktopPortal::prefer(Scheme scheme) {
    scheme_ = scheme;
    Q_EMIT SettingChanged(appearance, colourScheme, Read(appearance, colourScheme));
}

QDBusVariant DesktopPortal::Read(const QString& space, const QString& key) const {
    const bool known = space == appearance && key == colourScheme;
    // This method is known for its variant within a variant.
    return QDBusVariant(QVariant::fromValue(QDBusVariant(known ? static_cast<unsigned>(scheme_) : 0U)));
}

}  // namespace parlivo::desktop
