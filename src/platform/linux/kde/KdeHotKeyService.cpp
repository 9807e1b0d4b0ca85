// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KdeHotKeyService.h"

#include "platform/linux/kde/KdeKeys.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QList>

#include <cerrno>
#include <utility>

namespace parlivo::kde {

namespace {

const QString service = QStringLiteral("org.kde.kglobalaccel");
const QString object = QStringLiteral("/kglobalaccel");
const QString interface = QStringLiteral("org.kde.KGlobalAccel");
const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");

/// Name and title of the component and of the action, as the desktop's settings list them.
const QStringList action{QStringLiteral("it.parlivo.Parlivo"), QStringLiteral("dictate"),
                         QStringLiteral("Parlivo"), QStringLiteral("Detta")};

/// KGlobalAccel's flags of setShortcut.
constexpr unsigned setPresent = 2;
constexpr unsigned noAutoloading = 4;
constexpr unsigned isDefault = 8;

constexpr int replyTimeout = 2000;  // ms

QDBusMessage ask(const QDBusConnection& bus, const QString& method, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(service, object, interface, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, replyTimeout);
}

QList<int> keysOf(const QDBusMessage& reply) {
    const QDBusReply<QList<int>> keys(reply);
    return keys.isValid() ? keys.value() : QList<int>();
}

}  // namespace

class KdeHotKeyService::Registration : public HotKeyRegistration {
  public:
    explicit Registration(KdeHotKeyService& service) : service_(service) {}
    ~Registration() override {
        service_.giveUp();
        service_.edges_.release();
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    KdeHotKeyService& service_;
};

bool KdeHotKeyService::isOffered() {
    const auto* const names = QDBusConnection::sessionBus().interface();
    return names && names->isServiceRegistered(service).value();
}

KdeHotKeyService::KdeHotKeyService() : bus_(QDBusConnection::sessionBus()) {
    qDBusRegisterMetaType<QList<int>>();
}

KdeHotKeyService::~KdeHotKeyService() = default;

std::unique_ptr<HotKeyHandler> KdeHotKeyService::installHandler(Edge pressed, Edge released, Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result KdeHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                       HotKeyIdentity) {
    const auto combination = combinationOf(key, modifiers);
    if (!combination) return HotKeyRefusal{EINVAL};
    if (const int error = take(*combination); error != 0) return HotKeyRefusal{error};
    return std::make_unique<Registration>(*this);
}

/// The default is what was chosen here. As long as that stays, what the user chose in the desktop's settings
/// instead goes before it.
int KdeHotKeyService::take(int combination) {
    const QList<int> wanted{combination};
    if (ask(bus_, QStringLiteral("doRegister"), {action}).type() != QDBusMessage::ReplyMessage)
        return ENOTCONN;
    const bool sameAsBefore = keysOf(ask(bus_, QStringLiteral("defaultShortcut"), {action})) == wanted;
    const auto set = [&](unsigned flags) {
        return keysOf(ask(bus_, QStringLiteral("setShortcut"),
                          {action, QVariant::fromValue(wanted), QVariant::fromValue(flags)}));
    };
    set(isDefault);
    const QList<int> taken = set(sameAsBefore ? setPresent : setPresent | noAutoloading);
    if (taken.isEmpty() || taken.first() == 0 || !listen()) {
        giveUp();
        return EBUSY;
    }
    return 0;
}

void KdeHotKeyService::giveUp() {
    ask(bus_, QStringLiteral("setInactive"), {action});
}

bool KdeHotKeyService::listen() {
    if (!component_.isEmpty()) return true;
    const QDBusReply<QDBusObjectPath> path(ask(bus_, QStringLiteral("getComponent"), {action.first()}));
    if (!path.isValid()) return false;
    component_ = path.value().path();
    return bus_.connect(service, component_, componentInterface, QStringLiteral("globalShortcutPressed"),
                        this, SLOT(pressed(QString, QString, qlonglong))) &&
           bus_.connect(service, component_, componentInterface, QStringLiteral("globalShortcutReleased"),
                        this, SLOT(released(QString, QString, qlonglong)));
}

void KdeHotKeyService::pressed(const QString&, const QString& name, qlonglong) {
    if (name == action.at(1)) edges_.press();
}

void KdeHotKeyService::released(const QString&, const QString& name, qlonglong) {
    if (name == action.at(1)) edges_.release();
}

}  // namespace parlivo::kde
