// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/RemoteSession.h"

#include "platform/linux/gnome/PipeWriter.h"
#include "platform/linux/wayland/ClipboardText.h"

#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QStringList>

#include <fcntl.h>

#include <utility>

namespace parlivo::gnome {

namespace {

const QString service = QStringLiteral("org.gnome.Mutter.RemoteDesktop");
const QString object = QStringLiteral("/org/gnome/Mutter/RemoteDesktop");
const QString sessionInterface = QStringLiteral("org.gnome.Mutter.RemoteDesktop.Session");

constexpr int replyTimeout = 3000;  // ms

/// The device type "keyboard" of SupportedDeviceTypes.
constexpr unsigned keyboardType = 1;

QDBusMessage call(const QDBusConnection& bus, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return bus.call(message, QDBus::Block, replyTimeout);
}

QVariant compositorProperty(const QDBusConnection& bus, const QString& name) {
    const QDBusReply<QDBusVariant> reply(call(bus, object, QStringLiteral("org.freedesktop.DBus.Properties"),
                                              QStringLiteral("Get"), {service, name}));
    return reply.isValid() ? reply.value().variant() : QVariant();
}

bool isReply(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage;
}

/// A descriptor of our own, since the message closes its one.
UniqueFd descriptorIn(const QDBusMessage& message) {
    const QDBusReply<QDBusUnixFileDescriptor> reply(message);
    if (!reply.isValid()) return {};
    return UniqueFd(fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0));
}

}  // namespace

bool RemoteSession::isOffered(const QDBusConnection& bus) {
    if (!bus.isConnected()) return false;
    return compositorProperty(bus, QStringLiteral("Version")).toInt() >= 1 &&
           (compositorProperty(bus, QStringLiteral("SupportedDeviceTypes")).toUInt() & keyboardType) != 0;
}

std::unique_ptr<RemoteSession> RemoteSession::open(const QDBusConnection& bus) {
    const QDBusReply<QDBusObjectPath> path(call(bus, object, service, QStringLiteral("CreateSession"), {}));
    if (!path.isValid()) return nullptr;
    std::unique_ptr<RemoteSession> session(new RemoteSession(bus, path.value().path()));
    return session->start() ? std::move(session) : nullptr;
}

RemoteSession::RemoteSession(QDBusConnection bus, QString path)
    : bus_(std::move(bus)), path_(std::move(path)) {
    connectSignal("SelectionTransfer", SLOT(transferAsked(QString, uint)));
    connectSignal("SelectionOwnerChanged", SLOT(ownerChanged(QVariantMap)));
    connectSignal("Closed", SLOT(sessionClosed()));
}

RemoteSession::~RemoteSession() {
    if (isRunning_) ask("Stop");
}

bool RemoteSession::start() {
    isRunning_ = isReply(ask("Start"));
    return isRunning_ && isReply(ask("EnableClipboard", {QVariantMap()}));
}

void RemoteSession::connectSignal(const char* name, const char* slot) {
    bus_.connect(service, path_, sessionInterface, QString::fromLatin1(name), this, slot);
}

QDBusMessage RemoteSession::ask(const char* method, const QVariantList& arguments) {
    return call(bus_, path_, sessionInterface, QString::fromLatin1(method), arguments);
}

bool RemoteSession::notifyKey(std::uint32_t key, KeyState state) {
    return isReply(ask("NotifyKeyboardKeycode", {key, state == KeyState::Down}));
}

UniqueFd RemoteSession::receiveText() {
    if (isOwner_) return {};
    for (const char* type : wayland::textTypes) {
        UniqueFd pipe = descriptorIn(ask("SelectionRead", {QString::fromLatin1(type)}));
        if (pipe) return pipe;
    }
    return {};
}

bool RemoteSession::offer(const QString& text, Pasteboard::History history) {
    QStringList types;
    for (const char* type : wayland::textTypes) types.append(QString::fromLatin1(type));
    if (history == Pasteboard::History::Omit) types.append(QString::fromLatin1(wayland::secretHint));
    // Before the request: its answer may come after the first program's asking for the text.
    text_ = text;
    ++offers_;
    isOwner_ = isReply(ask("SetSelection", {QVariantMap{{QStringLiteral("mime-types"), types}}}));
    return isOwner_;
}

void RemoteSession::waitForCompositor() {
    compositorProperty(bus_, QStringLiteral("Version"));
}

void RemoteSession::transferAsked(const QString& type, uint serial) {
    UniqueFd pipe = descriptorIn(ask("SelectionWrite", {serial}));
    if (!pipe) return;
    const bool isHint = type == QLatin1String(wayland::secretHint);
    const QByteArray bytes = isHint ? QByteArray(wayland::secretHintValue) : text_.toUtf8();
    auto* const writer = new PipeWriter(std::move(pipe), bytes, this);
    connect(writer, &PipeWriter::finished, this, [this, writer, serial, isHint, offer = offers_](bool whole) {
        writer->deleteLater();
        ask("SelectionWriteDone", {serial, whole});
        if (whole && !isHint && offer == offers_) Q_EMIT textTaken();
    });
}

void RemoteSession::ownerChanged(const QVariantMap& owner) {
    isOwner_ = owner.value(QStringLiteral("session-is-owner")).toBool();
}

void RemoteSession::sessionClosed() {
    isRunning_ = false;
    isOwner_ = false;
    Q_EMIT closed();
}

}  // namespace parlivo::gnome
