// SPDX-License-Identifier: MIT
#include "desktop/hotkey/ShortcutsPortal.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariantMap>

#include <utility>

namespace parlivo::desktop {

namespace {

const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
const QString root = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString connectionName = QStringLiteral("tests' portal");

/// The first entry of an argument a(sa{sv}).
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

}  // namespace

class ShortcutsPortal::Object : public QDBusVirtualObject {
  public:
    explicit Object(Behaviour behaviour)
        : behaviour_(behaviour),
          bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)) {
        qDBusRegisterMetaType<Shortcut>();
        qDBusRegisterMetaType<QList<Shortcut>>();
        bus_.registerVirtualObject(root, this, QDBusConnection::SubPath);
        bus_.registerService(name);
    }
    ~Object() override {
        bus_.unregisterService(name);
        QDBusConnection::disconnectFromBus(connectionName);
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (!behaviour_.hangs) return handle(message, bus);
        message.setDelayedReply(true);
        unanswered_.append(message);
        return true;
    }
    void wakeUp() {
        behaviour_.hangs = false;
        for (const QDBusMessage& message : std::exchange(unanswered_, {})) handle(message, bus_);
    }

    bool handle(const QDBusMessage& message, const QDBusConnection& bus) {
        if (message.member() == QLatin1String("Get"))
            return bus.send(message.createReply(
                QVariant::fromValue(QDBusVariant(QVariant::fromValue(behaviour_.version)))));
        if (message.member() == QLatin1String("Register")) {
            program_ = message.arguments().value(0).toString();
            return bus.send(behaviour_.knowsProgram ? message.createReply()
                                                    : message.createErrorReply(
                                                          QStringLiteral("org.freedesktop.DBus.Error.Failed"),
                                                          QStringLiteral("no desktop file")));
        }
        if (message.member() == QLatin1String("CreateSession")) return createSession(message);
        if (message.member() == QLatin1String("BindShortcuts")) return bindShortcuts(message);
        return false;
    }

    void tell(const char* signal) const {
        auto message = QDBusMessage::createSignal(root, shortcuts, QString::fromLatin1(signal));
        message << QVariant::fromValue(QDBusObjectPath(session_)) << id_ << qulonglong{0} << QVariantMap();
        bus_.send(message);
    }
    void closeSession() {
        auto message = QDBusMessage::createSignal(session_, QStringLiteral("org.freedesktop.portal.Session"),
                                                  QStringLiteral("Closed"));
        message << QVariantMap();
        bus_.send(message);
        session_.clear();
    }

    QString program_;
    QString trigger_;
    int questions_ = 0;
    QList<QDBusMessage> unanswered_;

  private:
    static QString partOf(const QDBusMessage& message) {
        return message.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    }
    void respond(const QDBusMessage& request, unsigned code, const QVariantMap& results) const {
        const QString token = qdbus_cast<QVariantMap>(request.arguments().last())
                                  .value(QStringLiteral("handle_token"))
                                  .toString();
        const QString path = QStringLiteral("%1/request/%2/%3").arg(root, partOf(request), token);
        bus_.send(request.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        auto response = QDBusMessage::createTargetedSignal(request.service(), path,
                                                           QStringLiteral("org.freedesktop.portal.Request"),
                                                           QStringLiteral("Response"));
        response << code << results;
        bus_.send(response);
    }
    bool createSession(const QDBusMessage& request) {
        const auto options = qdbus_cast<QVariantMap>(request.arguments().last());
        session_ =
            QStringLiteral("%1/session/%2/%3")
                .arg(root, partOf(request), options.value(QStringLiteral("session_handle_token")).toString());
        respond(request, 0, {{QStringLiteral("session_handle"), session_}});
        return true;
    }
    bool bindShortcuts(const QDBusMessage& request) {
        ++questions_;
        auto asked = qdbus_cast<QList<Shortcut>>(request.arguments().value(1).value<QDBusArgument>());
        id_ = asked.value(0).id;
        trigger_ = asked.value(0).details.value(QStringLiteral("preferred_trigger")).toString();
        if (behaviour_.answer == Answer::Dismissed || behaviour_.failures-- > 0) {
            respond(request, behaviour_.answer == Answer::Dismissed ? 1 : 2, {});
            return true;
        }
        for (Shortcut& shortcut : asked)
            shortcut.details = {{QStringLiteral("trigger_description"), QStringLiteral("Premi ") + trigger_}};
        respond(request, behaviour_.answer == Answer::BoundButFailed ? 2 : 0,
                {{QStringLiteral("shortcuts"), QVariant::fromValue(asked)}});
        return true;
    }

    Behaviour behaviour_;
    QDBusConnection bus_;
    QString session_;
    QString id_;
};

ShortcutsPortal::ShortcutsPortal(Behaviour behaviour) {
    jobs_.moveToThread(&thread_);
    thread_.start();
    jobs_.run([&] { object_ = std::make_unique<Object>(behaviour); });
}

ShortcutsPortal::~ShortcutsPortal() {
    jobs_.run([this] { object_.reset(); });
    thread_.quit();
    thread_.wait();
}

void ShortcutsPortal::tell(const char* signal) {
    jobs_.run([&] { object_->tell(signal); });
}

void ShortcutsPortal::wakeUp() {
    jobs_.run([this] { object_->wakeUp(); });
}

bool ShortcutsPortal::isAsked() {
    bool asked = false;
    jobs_.run([&] { asked = !object_->unanswered_.isEmpty(); });
    return asked;
}

void ShortcutsPortal::closeSession() {
    jobs_.run([&] { object_->closeSession(); });
}

QString ShortcutsPortal::program() {
    QString program;
    jobs_.run([&] { program = object_->program_; });
    return program;
}

QString ShortcutsPortal::trigger() {
    QString trigger;
    jobs_.run([&] { trigger = object_->trigger_; });
    return trigger;
}

int ShortcutsPortal::questions() {
    int questions = 0;
    jobs_.run([&] { questions = object_->questions_; });
    return questions;
}

}  // namespace parlivo::desktop
