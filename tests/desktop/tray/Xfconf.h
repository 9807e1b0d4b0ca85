// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <optional>

namespace parlivo::desktop {

/// Xfce's settings service as far as it tells of a dark panel, on the session bus as long as this lives.
class Xfconf : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")
  public:
    Xfconf() {
        bus_.registerObject(path(), this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
        bus_.registerService(name());
    }
    ~Xfconf() override {
        bus_.unregisterService(name());
        bus_.unregisterObject(path());
        QDBusConnection::disconnectFromBus(bus_.name());
    }
    Xfconf(const Xfconf&) = delete;
    Xfconf& operator=(const Xfconf&) = delete;

    /// The user's choice; without one the setting is not there.
    void setDarkMode(bool dark) {
        dark_ = dark;
        Q_EMIT PropertyChanged(QStringLiteral("xfce4-panel"), QStringLiteral("/panels/dark-mode"),
                               QDBusVariant(dark));
    }

  public Q_SLOTS:
    QDBusVariant GetProperty(const QString& channel, const QString& property) const {
        if (dark_ && channel == QStringLiteral("xfce4-panel") &&
            property == QStringLiteral("/panels/dark-mode")) {
            return QDBusVariant(*dark_);
        }
        sendErrorReply(QStringLiteral("org.xfce.Xfconf.Error.PropertyNotFound"), property);
        return QDBusVariant(false);
    }

  Q_SIGNALS:
    void PropertyChanged(const QString& channel, const QString& property, const QDBusVariant& value);

  private:
    static QString name() { return QStringLiteral("org.xfce.Xfconf"); }
    static QString path() { return QStringLiteral("/org/xfce/Xfconf"); }

    QDBusConnection bus_ =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("xfconf"));
    std::optional<bool> dark_;
};

}  // namespace parlivo::desktop
