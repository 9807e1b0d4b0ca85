// SPDX-License-Identifier: MIT
#include "platform/linux/portal/PortalHotKeyService.h"

#include "platform/linux/desktop/KeyPositions.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

namespace parlivo::portal {

/// One hot key as the portal passes it on: (sa{sv}).
struct Shortcut {
    QString id;
    QVariantMap details;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Shortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.details;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Shortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.details;
    argument.endStructure();
    return argument;
}

namespace {

using namespace std::chrono_literals;

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString object = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString programId = QStringLiteral("it.parlivo.Parlivo");
const QString shortcutId = QStringLiteral("dictate");
/// Not the session bus's common connection: who has spoken to the portal on that cannot say who he is any
/// more.
const QString connectionName = QStringLiteral("portal");

/// A portal that has to be started waits for others in a session that is just beginning.
constexpr auto answerTimeout = 25s;
/// The response's code when the user has said no.
constexpr uint dismissed = 1;

/// Before a lost key is asked for the next time. What stands behind a portal may start after it.
constexpr std::array<std::chrono::milliseconds, 6> regainPauses{500ms, 1s, 4s, 8s, 16s, 32s};
constexpr HotKeyRefusal notSetUp{EAGAIN, HotKeyRefusal::Reason::NotSetUp};

QDBusMessage methodCall(const QString& path, const QString& interface, const QString& method,
                        const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

QDBusMessage versionQuestion() {
    return methodCall(object, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                      {shortcutsInterface, QStringLiteral("version")});
}

bool isReply(const QDBusMessage& message) {
    return message.type() == QDBusMessage::ReplyMessage;
}

QDBusMessage registration() {
    return methodCall(object, QStringLiteral("org.freedesktop.host.portal.Registry"),
                      QStringLiteral("Register"), {programId, QVariantMap()});
}

/// Starts it if it is there no more.
QDBusMessage activation() {
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("StartServiceByName"));
    message.setArguments({service, 0U});
    return message;
}

/// The keys go with the session.
class Registration : public HotKeyRegistration {};

}  // namespace

PortalHotKeyService::PortalHotKeyService(PortalDesktop desktop, std::function<void()> unavailable)
    : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)),
      desktop_(std::move(desktop)),
      unavailable_(std::move(unavailable)) {
    qDBusRegisterMetaType<Shortcut>();
    qDBusRegisterMetaType<QList<Shortcut>>();
    rule_.setRepeat(desktop_.repeat);
    silence_.setSingleShot(true);
    silence_.setTimerType(Qt::PreciseTimer);
    connect(&silence_, &QTimer::timeout, this, [this] { releaseHold(); });
    regaining_.setSingleShot(true);
    connect(&regaining_, &QTimer::timeout, this, [this] { regain(); });
    auto* const watcher =
        new QDBusServiceWatcher(service, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& former, const QString& present) {
                if (!former.isEmpty()) portalEnded();
                if (!present.isEmpty()) portalStarted();
            });
    introduce();
}

PortalHotKeyService::~PortalHotKeyService() {
    // The connection's end ends the session, too.
    QDBusConnection::disconnectFromBus(connectionName);
}

void PortalHotKeyService::introduce() {
    call(registration(), [this](const QDBusMessage& registered) {
        if (!isReply(registered)) return unavailable_();
        call(versionQuestion(), [this](const QDBusMessage& version) {
            const auto number = version.arguments().value(0).value<QDBusVariant>().variant().toUInt();
            if (!isReply(version) || number < 1) return unavailable_();
            becomeReady();
        });
    });
}

/// The answer never comes within the call, not even where there is no bus.
void PortalHotKeyService::call(const QDBusMessage& question, const Answer& answer) {
    const auto timeout = Clock::scaled(answerTimeout);
    auto* const watcher =
        new QDBusPendingCallWatcher(bus_.asyncCall(question, static_cast<int>(timeout.count())), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answer] {
        watcher->deleteLater();
        answer(watcher->reply());
    });
}

/// Not earlier: a slot that is connected before the first call is never called (seen with Qt 6.4).
void PortalHotKeyService::becomeReady() {
    isReady_ = true;
    bus_.connect(service, object, shortcutsInterface, QStringLiteral("Activated"), this,
                 SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    bus_.connect(service, object, shortcutsInterface, QStringLiteral("Deactivated"), this,
                 SLOT(deactivated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    if (isAsking_) openSession();
}

std::unique_ptr<HotKeyHandler> PortalHotKeyService::installHandler(Edge pressed, Edge released,
                                                                   Change changed) {
    return edges_.install(std::move(pressed), std::move(released), std::move(changed));
}

HotKeyService::Result PortalHotKeyService::registerHotKey(KeyCode key, HotKeyModifiers modifiers,
                                                          HotKeyIdentity identity) {
    const auto trigger = desktop_.trigger(key, modifiers);
    if (!trigger) return HotKeyRefusal{EINVAL, HotKeyRefusal::Reason::Unusable};
    if (!identity_) identity_ = identity;
    const bool isTrial = identity != *identity_;
    // Once the user has allowed a key the desktop says which.
    const bool isAllowed = isBound_ || desktop_.isAllowed();
    if (!isAllowed && desktop_.isHeld(key, modifiers)) {
        if (!isTrial) wanted_.clear();
        return HotKeyRefusal{EBUSY};
    }
    if (isTrial) return std::make_unique<Registration>();
    wanted_ = *trigger;
    if (!isAllowed) return notSetUp;
    if (!isBound_) ask();
    return std::make_unique<Registration>();
}

std::optional<KeyCode> PortalHotKeyService::keyCodeOf(std::uint32_t nativeScanCode) const {
    if (nativeScanCode < KeyPositions::displayOffset) return std::nullopt;
    return KeyPositions::keyCodeOf(nativeScanCode - KeyPositions::displayOffset);
}

std::vector<SessionHint> PortalHotKeyService::hints() {
    SessionHint hint{
        .topic = SessionHint::Topic::HotKey, .text = {}, .lines = {}, .actionLabel = {}, .action = {}};
    if (isBound_) {
        hint.text =
            QCoreApplication::translate(
                "parlivo::PortalHotKeyService",
                "Il desktop ha assegnato a Parlivo la scorciatoia: %1. Si cambia nelle impostazioni del desktop.")
                .arg(keys_);
        return {hint};
    }
    if (isAsking_ || wanted_.isEmpty()) return {};
    hint.text =
        wasRefused_
            ? QCoreApplication::translate(
                  "parlivo::PortalHotKeyService",
                  "Il desktop non ha dato la scorciatoia. Puoi chiederla di nuovo, o assegnare un tasto a questo comando nelle impostazioni del desktop.")
            : QCoreApplication::translate(
                  "parlivo::PortalHotKeyService",
                  "Il desktop chiede una volta il permesso per la scorciatoia. Con un tasto solo, come F9, il rilascio è più preciso.");
    if (wasRefused_) hint.lines = QStringLiteral("parlivo --toggle");
    hint.actionLabel =
        QCoreApplication::translate("parlivo::PortalHotKeyService", "Chiedi la scorciatoia al desktop");
    hint.action = [this] { ask(); };
    return {hint};
}

/// The path of a request's object is known before it is sent, so that no answer comes too early.
void PortalHotKeyService::request(const QString& method, const QVariantList& arguments, QVariantMap options,
                                  const char* slot) {
    const QString token = QStringLiteral("parlivo%1").arg(++requests_);
    const QString sender = bus_.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    request_ = QStringLiteral("%1/request/%2/%3").arg(object, sender, token);
    bus_.connect(service, request_, QStringLiteral("org.freedesktop.portal.Request"),
                 QStringLiteral("Response"), this, slot);
    options.insert(QStringLiteral("handle_token"), token);
    auto* const watcher = new QDBusPendingCallWatcher(
        bus_.asyncCall(methodCall(object, shortcutsInterface, method, QVariantList(arguments) << options)),
        this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, sent = request_] {
        watcher->deleteLater();
        if (watcher->isError() && sent == request_) fail();
    });
}

/// One to a portal that has ended since may fail when the next one has been asked already.
bool PortalHotKeyService::isAnswer(const QDBusMessage& response) const {
    return response.path() == request_;
}

void PortalHotKeyService::ask() {
    if (!std::exchange(isAsking_, true) && isReady_) openSession();
}

/// Another one each time: a session's keys can be bound once only.
void PortalHotKeyService::openSession() {
    closeSession();
    request(QStringLiteral("CreateSession"), {},
            {{QStringLiteral("session_handle_token"), QStringLiteral("parlivo%1").arg(requests_)}},
            SLOT(created(uint, QVariantMap, QDBusMessage)));
}

void PortalHotKeyService::closeSession() {
    if (session_.isEmpty()) return;
    const QString interface = QStringLiteral("org.freedesktop.portal.Session");
    bus_.disconnect(service, session_, interface, QStringLiteral("Closed"), this,
                    SLOT(sessionClosed(QVariantMap)));
    bus_.asyncCall(methodCall(std::exchange(session_, QString()), interface, QStringLiteral("Close"), {}));
}

void PortalHotKeyService::created(uint code, const QVariantMap& results, const QDBusMessage& response) {
    if (!isAnswer(response)) return;
    session_ = code == 0 ? results.value(QStringLiteral("session_handle")).toString() : QString();
    if (session_.isEmpty()) return fail();
    bus_.connect(service, session_, QStringLiteral("org.freedesktop.portal.Session"),
                 QStringLiteral("Closed"), this, SLOT(sessionClosed(QVariantMap)));
    bind();
}

void PortalHotKeyService::bind() {
    const QVariantMap details{
        {QStringLiteral("description"),
         QCoreApplication::translate("parlivo::PortalHotKeyService", "Detta tenendo premuto")},
        {QStringLiteral("preferred_trigger"), wanted_}};
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(QDBusObjectPath(session_)),
             QVariant::fromValue(QList<Shortcut>{{shortcutId, details}}), QString()},
            {}, SLOT(bound(uint, QVariantMap, QDBusMessage)));
}

/// Not judged by the code: GNOME 48 gives 2 although it has bound the key.
void PortalHotKeyService::bound(uint code, const QVariantMap& results, const QDBusMessage& response) {
    if (!isAnswer(response)) return;
    const auto shortcuts =
        qdbus_cast<QList<Shortcut>>(results.value(QStringLiteral("shortcuts")).value<QDBusArgument>());
    for (const Shortcut& shortcut : shortcuts) {
        if (shortcut.id != shortcutId) continue;
        keys_ = shortcut.details.value(QStringLiteral("trigger_description")).toString();
        isAsking_ = false;
        isBound_ = true;
        wasRefused_ = false;
        regains_.reset();
        regaining_.stop();
        return edges_.tell(std::nullopt);
    }
    if (code == dismissed) regains_.reset();
    fail();
}

void PortalHotKeyService::fail() {
    wasRefused_ = true;
    isAsking_ = false;
    isBound_ = false;
    edges_.tell(notSetUp);
    if (regains_) regainLater();
}

void PortalHotKeyService::activated(const QDBusObjectPath& session, const QString& id, qulonglong,
                                    const QVariantMap&) {
    if (session.path() != session_ || id != shortcutId) return;
    const auto now = Clock::now();
    const auto edges = rule_.activated(now);
    if (const auto deadline = rule_.deadline())
        silence_.start(std::chrono::ceil<std::chrono::milliseconds>(*deadline - now));
    if (edges == ReleaseRule::Edges::ReleaseAndPress) edges_.release();
    if (edges != ReleaseRule::Edges::None) edges_.press();
}

void PortalHotKeyService::deactivated(const QDBusObjectPath& session, const QString& id, qulonglong,
                                      const QVariantMap&) {
    if (session.path() == session_ && id == shortcutId) releaseHold();
}

void PortalHotKeyService::releaseHold() {
    silence_.stop();
    if (rule_.end()) edges_.release();
}

void PortalHotKeyService::sessionClosed(const QVariantMap&) {
    releaseHold();
    session_.clear();
    if (isBound_) fail();
}

/// The hold, the session and the key end with it; what was asked is not answered any more.
void PortalHotKeyService::portalEnded() {
    if (!isReady_) return;
    releaseHold();
    session_.clear();
    request_.clear();
    const bool wantsKey = isBound_ || isAsking_ || regains_;
    isThere_ = false;
    isAsking_ = false;
    isBound_ = false;
    if (!wantsKey) return;
    regains_ = 0;
    regainLater();
}

/// Another portal knows neither this program nor its session.
void PortalHotKeyService::portalStarted() {
    isThere_ = true;
    if (!isReady_ || !regains_) return;  // it was started for the first question
    regains_ = 0;
    regain();
}

void PortalHotKeyService::regain() {
    regaining_.stop();
    if (isThere_) {
        bus_.asyncCall(registration());
        return ask();
    }
    // One that comes back soon need not be told of.
    if (*regains_ == 2) edges_.tell(notSetUp);
    bus_.asyncCall(activation());
    regainLater();
}

void PortalHotKeyService::regainLater() {
    const auto next = static_cast<std::size_t>(*regains_);
    if (next == regainPauses.size()) return;  // until the next portal, or until the user asks
    regains_ = *regains_ + 1;
    regaining_.start(Clock::scaled(regainPauses.at(next)));
}

}  // namespace parlivo::portal
