// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/NotifierHostWatch.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <utility>

namespace parlivo {

namespace {

const auto service = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto object = QStringLiteral("/StatusNotifierWatcher");

}  // namespace

NotifierHostWatch::NotifierHostWatch(std::function<void()> changed)
    : bus_(QDBusConnection::sessionBus()),
      watcher_(service, bus_, QDBusServiceWatcher::WatchForOwnerChange),
      changed_(std::move(changed)) {
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) { ownerChanged(newOwner); });
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus_.connect(service, object, service, QString::fromLatin1(signal), this, SLOT(askForHost()));
    askForHost();
}

/// The watcher tells items from hosts; what counts is that there is a host.
void NotifierHostWatch::askForHost() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        service, object, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << service << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QDBusVariant> present = *answer;
        setHostPresent(!present.isError() && present.value().variant().toBool());
        answer->deleteLater();
    });
}

void NotifierHostWatch::ownerChanged(const QString& newOwner) {
    setHostPresent(false);
    if (!newOwner.isEmpty()) askForHost();
}

void NotifierHostWatch::setHostPresent(bool present) {
    if (present == hostPresent_) return;
    hostPresent_ = present;
    changed_();
}

}  // namespace parlivo
