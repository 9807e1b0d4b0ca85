// SPDX-License-Identifier: MIT
#include "desktop/tray/NotifierWatcher.h"

#include "support/Waiting.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QtEndian>

#include <utility>

namespace parlivo::desktop {

namespace {

const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const auto itemPath = QStringLiteral("/StatusNotifierItem");
const auto menuInterface = QStringLiteral("com.canonical.dbusmenu");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

/// A connection of its own: over the shared one the test would talk to itself.
QDBusConnection ownConnection() {
    static int count = 0;
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                         QStringLiteral("panel %1").arg(++count));
}

/// The first shortcut of a menu line: a list of lists of key names.
QString shortcutOf(const QVariant& value) {
    if (!value.canConvert<QDBusArgument>()) return {};
    const auto argument = value.value<QDBusArgument>();
    QStringList keys;
    argument.beginArray();
    if (!argument.atEnd()) argument >> keys;
    argument.endArray();
    return keys.join(QLatin1Char('+'));
}

MenuLine lineOf(int id, const QVariantMap& properties) {
    const auto flag = [&](const char* name) { return properties.value(QLatin1String(name), true).toBool(); };
    return {.id = id,
            .label = properties.value(QStringLiteral("label")).toString(),
            .enabled = flag("enabled"),
            .visible = flag("visible"),
            .separator = properties.value(QStringLiteral("type")).toString() == QStringLiteral("separator"),
            .shortcut = shortcutOf(properties.value(QStringLiteral("shortcut")))};
}

/// The lines below the root of a layout, (ia{sv}av) with the children as variants of the same shape.
std::vector<MenuLine> linesOf(const QDBusArgument& layout) {
    std::vector<MenuLine> lines;
    int id = 0;
    QVariantMap properties;
    layout.beginStructure();
    layout >> id >> properties;
    layout.beginArray();
    while (!layout.atEnd()) {
        QDBusVariant child;
        layout >> child;
        const auto line = child.variant().value<QDBusArgument>();
        line.beginStructure();
        line >> id >> properties;
        line.endStructure();
        lines.push_back(lineOf(id, properties));
    }
    layout.endArray();
    layout.endStructure();
    return lines;
}

/// Pictures travel as ARGB in network byte order.
QImage pictureOf(int width, int height, const QByteArray& data) {
    QImage image(width, height, QImage::Format_ARGB32);
    const char* pixel = data.constData();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, pixel += sizeof(quint32))
            image.setPixel(x, y, qFromBigEndian<quint32>(pixel));
    }
    return image;
}

}  // namespace

NotifierWatcher::NotifierWatcher(Host host) : bus_(ownConnection()), hasHost_(host == Host::Present) {
    bus_.registerObject(watcherPath, this,
                        QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                            QDBusConnection::ExportAllProperties);
    bus_.registerService(watcherName);
}

NotifierWatcher::~NotifierWatcher() {
    bus_.unregisterService(watcherName);
    bus_.unregisterObject(watcherPath);
    QDBusConnection::disconnectFromBus(bus_.name());
}

void NotifierWatcher::addHost() {
    hasHost_ = true;
    Q_EMIT StatusNotifierHostRegistered();
}

void NotifierWatcher::RegisterStatusNotifierItem(const QString& serviceOrPath) {
    items_.append(serviceOrPath.startsWith(QLatin1Char('/')) ? message().service() : serviceOrPath);
    Q_EMIT StatusNotifierItemRegistered(items_.last());
}

void NotifierWatcher::RegisterStatusNotifierHost(const QString& /*service*/) {
    addHost();
}

NotifierItem::NotifierItem(QDBusConnection bus, QString service)
    : bus_(std::move(bus)), service_(std::move(service)) {}

QDBusMessage NotifierItem::call(const QString& path, const QString& interface, const QString& method,
                                const QVariantList& arguments) const {
    QDBusMessage question = QDBusMessage::createMethodCall(service_, path, interface, method);
    question.setArguments(arguments);
    const QDBusPendingCall answer = bus_.asyncCall(question);
    waitFor([&] { return answer.isFinished(); });
    return answer.reply();
}

QVariant NotifierItem::property(const QString& name) const {
    const QDBusMessage answer =
        call(itemPath, propertiesInterface, QStringLiteral("Get"), {itemInterface, name});
    return answer.arguments().value(0).value<QDBusVariant>().variant();
}

QImage NotifierItem::icon(int width) const {
    const auto pictures = property(QStringLiteral("IconPixmap")).value<QDBusArgument>();
    QImage found;
    pictures.beginArray();
    while (!pictures.atEnd()) {
        int pictureWidth = 0;
        int pictureHeight = 0;
        QByteArray data;
        pictures.beginStructure();
        pictures >> pictureWidth >> pictureHeight >> data;
        pictures.endStructure();
        if (pictureWidth == width) found = pictureOf(pictureWidth, pictureHeight, data);
    }
    pictures.endArray();
    return found;
}

void NotifierItem::activate() const {
    call(itemPath, itemInterface, QStringLiteral("Activate"), {0, 0});
}

QString NotifierItem::menuPath() const {
    return property(QStringLiteral("Menu")).value<QDBusObjectPath>().path();
}

void NotifierItem::openMenu() const {
    call(menuPath(), menuInterface, QStringLiteral("AboutToShow"), {0});
}

std::vector<MenuLine> NotifierItem::menu() const {
    const QDBusMessage answer =
        call(menuPath(), menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()});
    if (answer.arguments().size() < 2) return {};
    return linesOf(answer.arguments().at(1).value<QDBusArgument>());
}

void NotifierItem::choose(const QString& label) const {
    for (const MenuLine& line : menu()) {
        if (line.label != label) continue;
        call(menuPath(), menuInterface, QStringLiteral("Event"),
             {line.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    }
}

}  // namespace parlivo::desktop
