// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Bundle.h"
#include "platform/Notifications.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <optional>

class QDBusServiceWatcher;

namespace parlivo {

/// The notification service of the session bus, in version 1.2 of its protocol
/// (org.freedesktop.Notifications). Where there is no bus or no service, nothing is shown.
class BusNotifications : public QObject, public Notifications {
    Q_OBJECT

  public:
    /// The bundle has the icon for a desktop whose theme does not.
    explicit BusNotifications(const Bundle& bundle);

    void show(Notification notification) override;
    void withdraw() override;

  private Q_SLOTS:
    void actionInvoked(uint id, const QString& key);
    void closed(uint id, uint reason);

  private:
    /// Asks once what the service can do, which decides how a text is to be written.
    void askForCapabilities();
    void send();
    void sent(uint id);

    QDBusConnection bus_;
    QString icon_;
    std::optional<bool> markup_;  ///< whether the service takes texts for markup; nullopt while unknown
    bool asking_ = false;
    bool sending_ = false;
    std::optional<Notification> waiting_;  ///< not sent yet
    std::optional<Notification> shown_;
    uint id_ = 0;  ///< of the one that is shown, as the service counts; 0 = none
};

}  // namespace parlivo
