// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KdeHotKeyService.h"

#include "platform/linux/desktop/KeyPositions.h"
#include "platform/linux/kde/KdeKeys.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusServiceWatcher>
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
const QStringList dictate{QStringLiteral("it.parlivo.Parlivo"), QStringLiteral("dictate"),
                          QStringLiteral("Parlivo"), QStringLiteral("Detta")};
/// For a moment, to see whether a combination can be had.
const QStringList trial{QStringLiteral("it.parlivo.Parlivo"), QStringLiteral("trial"),
                        QStringLiteral("Parlivo"), QStringLiteral("Prova")};
constexpr std::uint32_t dictateId = 1;

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
    Registration(KdeHotKeyService& service, QStringList action)
        : service_(service), action_(std::move(action)) {}
    ~Registration() override {
        service_.giveUp(action_);
        if (action_ == dictate) service_.endHold();
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  private:
    KdeHotKeyService& service_;
    const QStringList action_;
};

bool KdeHotKeyService::isOffered() {
    const auto* const names = QDBusConnection::sessionBus().interface();
    return names && names->isServiceRegistered(service).value();
}

KdeHotKeyService::KdeHotKeyService(std::unique_ptr<KeyLayout> layout, NoOpKey noOpKey)
    : layout_(std::move(layout)), noOpKey_(std::move(noOpKey)), bus_(QDBusConnection::sessionBus()) {
    qDBusRegisterMetaType<QList<int>>();
    auto* const watcher =
        new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { serviceRestarted(); });
}

KdeHotKeyService::~KdeHotKeyService() = default;

std::unique_ptr<HotKeyHandler> KdeHotKeyService::installHandler(Edge pressed, Edge released, Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result KdeHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                       HotKeyIdentity identity) {
    const auto position = KeyPositions::kernelCodeOf(key);
    const char32_t printed = layout_ && position ? layout_->character(*position) : 0;
    const auto combination = combinationOf(key, modifiers, printed);
    if (!combination) return HotKeyRefusal{EINVAL, HotKeyRefusal::Reason::Unusable};
    const QStringList& action = identity.id == dictateId ? dictate : trial;
    const int error = take(action, *combination);
    if (error == ENOTCONN) return HotKeyRefusal{error, HotKeyRefusal::Reason::Unusable};
    if (error != 0) return HotKeyRefusal{error};
    if (action == dictate) combination_ = combination;
    return std::make_unique<Registration>(*this, action);
}

std::optional<KeyCode> KdeHotKeyService::keyCodeOf(std::uint32_t nativeScanCode) const {
    return KeyPositions::keyCodeOfDisplays(nativeScanCode);
}

QString KdeHotKeyService::keyLabel(KeyCode key) {
    const auto position = KeyPositions::kernelCodeOf(key);
    return layout_ && position ? layout_->label(*position) : QString();
}

/// The default is what was chosen here. As long as that stays, what the user chose in the desktop's settings
/// instead goes before it.
int KdeHotKeyService::take(const QStringList& action, int combination) {
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
        giveUp(action);
        return EBUSY;
    }
    return 0;
}

/// KWin serves hot keys itself, and a program may outlive it.
void KdeHotKeyService::serviceRestarted() {
    endHold();
    if (!combination_) return;
    const int error = take(dictate, *combination_);
    edges_.tell(error == 0 ? std::nullopt : std::optional(HotKeyRefusal{error}));
}

void KdeHotKeyService::giveUp(const QStringList& action) {
    if (action == dictate) combination_.reset();
    if (action == dictate)
        ask(bus_, QStringLiteral("setInactive"), {action});
    else
        ask(bus_, QStringLiteral("unregister"), {action.at(0), action.at(1)});
}

bool KdeHotKeyService::listen() {
    if (!component_.isEmpty()) return true;
    const QDBusReply<QDBusObjectPath> path(ask(bus_, QStringLiteral("getComponent"), {dictate.first()}));
    if (!path.isValid()) return false;
    component_ = path.value().path();
    return bus_.connect(service, component_, componentInterface, QStringLiteral("globalShortcutPressed"),
                        this, SLOT(pressed(QString, QString, qlonglong))) &&
           bus_.connect(service, component_, componentInterface, QStringLiteral("globalShortcutReleased"),
                        this, SLOT(released(QString, QString, qlonglong)));
}

/// The key first: a quick user lets go of Alt while the press is dealt with.
void KdeHotKeyService::beginHold() {
    if (edges_.isHeld()) return;
    if (noOpKey_.press) noOpKey_.press();
    edges_.press();
}

/// The key first here, too: what follows the release may paste.
void KdeHotKeyService::endHold() {
    if (!edges_.isHeld()) return;
    if (noOpKey_.release) noOpKey_.release();
    edges_.release();
}

void KdeHotKeyService::pressed(const QString&, const QString& action, qlonglong) {
    if (action == dictate.at(1)) beginHold();
}

void KdeHotKeyService::released(const QString&, const QString& action, qlonglong) {
    if (action == dictate.at(1)) endHold();
}

}  // namespace parlivo::kde
