// SPDX-License-Identifier: MIT
#include "platform/linux/session/BusNotifications.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <utility>

namespace parlivo {

namespace {

const auto service = QStringLiteral("org.freedesktop.Notifications");
const auto path = QStringLiteral("/org/freedesktop/Notifications");
const auto programName = QStringLiteral("Parlivo");
const auto desktopEntry = QStringLiteral("it.parlivo.Parlivo");
/// The key of the one action. Not "default", which a click anywhere on the message would choose.
const auto actionKey = QStringLiteral("help");
constexpr int serviceDecides = -1;  // how long it is shown

QDBusMessage call(const char* method) {
    return QDBusMessage::createMethodCall(service, path, service, QString::fromLatin1(method));
}

/// As the protocol has it: a name of the icon theme, or the URI of a file. The theme knows the name only
/// where the program was installed; a bundle that was merely unpacked shows its own picture.
QString iconOf(const Bundle& bundle) {
    const auto picture = QStringLiteral("icons/hicolor/48x48/apps/%1.png").arg(desktopEntry);
    if (!QStandardPaths::locate(QStandardPaths::GenericDataLocation, picture).isEmpty()) return desktopEntry;
    const auto file = bundle.resource(picture);
    return file ? QUrl::fromLocalFile(*file).toString(QUrl::FullyEncoded) : desktopEntry;
}

}  // namespace

BusNotifications::BusNotifications(const Bundle& bundle)
    : bus_(QDBusConnection::sessionBus()), icon_(iconOf(bundle)) {
    if (!bus_.isConnected()) return;
    bus_.connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                 SLOT(actionInvoked(uint, QString)));
    bus_.connect(service, path, service, QStringLiteral("NotificationClosed"), this,
                 SLOT(closed(uint, uint)));
    auto* owner = new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    // Another service counts anew, and may take texts differently.
    connect(owner, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        id_ = 0;
        markup_.reset();
    });
}

void BusNotifications::show(Notification notification) {
    if (!bus_.isConnected()) return;
    waiting_ = std::move(notification);
    if (markup_) {
        send();
    } else {
        askForCapabilities();
    }
}

void BusNotifications::withdraw() {
    waiting_.reset();
    shown_.reset();
    if (const uint id = std::exchange(id_, 0); id != 0) {
        QDBusMessage close = call("CloseNotification");
        close.setAutoStartService(false);
        bus_.asyncCall(close << id);
    }
}

void BusNotifications::askForCapabilities() {
    if (std::exchange(asking_, true)) return;
    auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(call("GetCapabilities")), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        asking_ = false;
        const QDBusPendingReply<QStringList> capabilities = *answer;
        if (capabilities.isError()) return waiting_.reset();
        markup_ = capabilities.value().contains(QStringLiteral("body-markup"));
        send();
    });
}

void BusNotifications::send() {
    // One at a time: only the answer tells what the next one is to replace.
    if (!waiting_ || sending_) return;
    shown_ = std::exchange(waiting_, std::nullopt);
    sending_ = true;
    QStringList actions;
    if (!shown_->actionLabel.isEmpty()) actions = {actionKey, shown_->actionLabel};
    const QString body = markup_.value_or(false) ? shown_->text.toHtmlEscaped() : shown_->text;
    const QVariantMap hints{{QStringLiteral("desktop-entry"), desktopEntry}};
    QDBusMessage notify = call("Notify");
    notify << programName << id_ << icon_ << programName << body << actions << hints << serviceDecides;
    auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(notify), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<uint> id = *answer;
        sent(id.isError() ? 0 : id.value());
    });
}

void BusNotifications::sent(uint id) {
    sending_ = false;
    id_ = id;
    // Taken back before the service had answered.
    if (!shown_ && !waiting_) return withdraw();
    send();
}

void BusNotifications::actionInvoked(uint id, const QString& key) {
    if (id != id_ || key != actionKey || !shown_) return;
    // A copy: it may show another notification.
    const auto chosen = shown_->onAction;
    if (chosen) chosen();
}

void BusNotifications::closed(uint id, uint) {
    if (id != id_) return;
    id_ = 0;
    shown_.reset();
}

}  // namespace parlivo
