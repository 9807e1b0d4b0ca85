// SPDX-License-Identifier: MIT
#include "platform/linux/session/BusRemoteControl.h"

#include "platform/linux/base/XdgDirectories.h"
#include "platform/linux/session/RemoteObject.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDir>

namespace parlivo {

namespace {

const auto service = QStringLiteral("it.parlivo.Parlivo");
const auto path = QStringLiteral("/it/parlivo/Parlivo");
const auto interfaceName = QStringLiteral("it.parlivo.Parlivo1");

/// How long a running instance may take to take a command.
constexpr int replyTimeout = 5000;  // ms

QDBusConnection bus() {
    return QDBusConnection::sessionBus();
}

/// Whether the bus answers: while it starts or ends it may accept the connection and not serve it.
bool busServes() {
    return bus().isConnected() && bus().interface() != nullptr;
}

QString lockFile() {
    const QString runtime = XdgDirectories::runtime();
    return (runtime.isEmpty() ? QDir::tempPath() : runtime) + QStringLiteral("/Parlivo.lock");
}

QString methodOf(RemoteCommand command) {
    switch (command) {
        case RemoteCommand::Press:
            return QStringLiteral("Press");
        case RemoteCommand::Release:
            return QStringLiteral("Release");
        case RemoteCommand::Toggle:
            return QStringLiteral("Toggle");
        case RemoteCommand::ShowSettings:
            return QStringLiteral("ShowSettings");
        case RemoteCommand::ShowFeedback:
            return QStringLiteral("ShowFeedback");
        case RemoteCommand::Quit:
            return QStringLiteral("Quit");
    }
    return {};
}

}  // namespace

BusRemoteControl::BusRemoteControl() : lock_(lockFile()) {}

BusRemoteControl::~BusRemoteControl() {
    if (!object_) return;
    bus().unregisterObject(path);
    bus().unregisterService(service);
}

RemoteControl::Instance BusRemoteControl::registerInstance() {
    if (busServes()) {
        if (bus().registerService(service)) return Instance::Only;
        if (bus().interface()->isServiceRegistered(service)) return Instance::Another;
    }
    // There is no bus, or it refuses the name.
    hiddenInstance_ = !lock_.take();
    return hiddenInstance_ ? Instance::Another : Instance::Only;
}

void BusRemoteControl::serve(RemoteTarget target) {
    object_ = std::make_unique<RemoteObject>(std::move(target));
    bus().registerObject(path, object_.get(),
                         QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                             QDBusConnection::ExportAllProperties);
}

void BusRemoteControl::announceState(const QString& state) {
    if (object_) Q_EMIT object_->StateChanged(state);
}

RemoteControl::Delivery BusRemoteControl::send(RemoteCommand command) {
    if (!busServes()) return Delivery::Unavailable;
    if (!bus().interface()->isServiceRegistered(service)) {
        return hiddenInstance_ ? Delivery::Unavailable : Delivery::NoInstance;
    }
    const auto call = QDBusMessage::createMethodCall(service, path, interfaceName, methodOf(command));
    const QDBusMessage reply = bus().call(call, QDBus::Block, replyTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage) return Delivery::Done;
    switch (QDBusError(reply).type()) {
        case QDBusError::NoReply:
        case QDBusError::TimedOut:
        case QDBusError::Timeout:
            return Delivery::NoAnswer;
        case QDBusError::ServiceUnknown:
            return Delivery::NoInstance;
        case QDBusError::Disconnected:
            return Delivery::Unavailable;
        default:
            return Delivery::Refused;
    }
}

QString BusRemoteControl::whyUnavailable() const {
    return busServes() ? QCoreApplication::translate("parlivo::BusRemoteControl",
                                                     "il bus D-Bus di questa sessione rifiuta il nome %1")
                             .arg(service)
                       : QCoreApplication::translate("parlivo::BusRemoteControl",
                                                     "questa sessione non ha un bus D-Bus");
}

}  // namespace parlivo
