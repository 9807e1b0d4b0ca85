// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/PanelForeground.h"

#include "platform/linux/desktop/CurrentDesktop.h"

#include <QDBusPendingCallWatcher>
#include <QStringList>

#include <utility>

namespace parlivo {

namespace {

using Foreground = StatusItemPlace::Foreground;

const auto xfconfService = QStringLiteral("org.xfce.Xfconf");
const auto xfconfObject = QStringLiteral("/org/xfce/Xfconf");
const auto panelChannel = QStringLiteral("xfce4-panel");
const auto darkMode = QStringLiteral("/panels/dark-mode");

const auto portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const auto portalObject = QStringLiteral("/org/freedesktop/portal/desktop");
const auto portalSettings = QStringLiteral("org.freedesktop.portal.Settings");
const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colourScheme = QStringLiteral("color-scheme");

/// Answers come wrapped in one variant or two.
QVariant unwrapped(const QDBusMessage& answer) {
    QVariant value = answer.arguments().value(0);
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

PanelForeground::PanelForeground(std::function<void()> changed)
    : bus_(QDBusConnection::sessionBus()), changed_(std::move(changed)) {
    if (currentDesktopIs("GNOME")) {
        value_ = Foreground::Light;  // its top bar is dark, whatever the applications are
    } else if (currentDesktopIs("XFCE")) {
        bus_.connect(xfconfService, xfconfObject, xfconfService, QStringLiteral("PropertyChanged"), this,
                     SLOT(xfceSettingChanged(QString, QString)));
        askXfce();
    } else {
        bus_.connect(portalService, portalObject, portalSettings, QStringLiteral("SettingChanged"), this,
                     SLOT(portalSettingChanged(QString, QString)));
        askPortal();
    }
}

/// Xfce's panel is dark unless the user wants it otherwise.
void PanelForeground::askXfce() {
    QDBusMessage question = QDBusMessage::createMethodCall(xfconfService, xfconfObject, xfconfService,
                                                           QStringLiteral("GetProperty"));
    question << panelChannel << darkMode;
    ask(question, [this](const QDBusMessage& answer) {
        const bool dark = answer.type() == QDBusMessage::ErrorMessage || unwrapped(answer).toBool();
        setValue(dark ? Foreground::Light : Foreground::Unknown);
    });
}

void PanelForeground::askPortal() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService, portalObject, portalSettings, QStringLiteral("Read"));
    question << appearance << colourScheme;
    ask(question, [this](const QDBusMessage& answer) {
        constexpr uint preferDark = 1;
        constexpr uint preferLight = 2;
        const uint scheme = unwrapped(answer).toUInt();
        setValue(scheme == preferDark    ? Foreground::Light
                 : scheme == preferLight ? Foreground::Dark
                                         : Foreground::Unknown);
    });
}

void PanelForeground::ask(const QDBusMessage& question,
                          const std::function<void(const QDBusMessage&)>& take) {
    auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, take] {
        take(answer->reply());
        answer->deleteLater();
    });
}

void PanelForeground::xfceSettingChanged(const QString& channel, const QString& property) {
    if (channel == panelChannel && property == darkMode) askXfce();
}

void PanelForeground::portalSettingChanged(const QString& space, const QString& key) {
    if (space == appearance && key == colourScheme) askPortal();
}

void PanelForeground::setValue(Foreground value) {
    if (value == value_) return;
    value_ = value;
    changed_();
}

}  // namespace parlivo
