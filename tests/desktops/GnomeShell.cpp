// SPDX-License-Identifier: MIT
#include "desktops/GnomeShell.h"

#include "platform/linux/wayland/ClipboardText.h"
#include "support/Error.h"
#include "support/Waiting.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QProcess>

#include <linux/input-event-codes.h>

#include <ranges>

namespace parlivo::desktop::gnome {

namespace {

using namespace std::chrono_literals;
using parlivo::gnome::RemoteSession;

[[noreturn]] void fail(const QString& what) {
    throw Error(QStringLiteral("desktop test"), 7, what);
}

QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!waitFor([&] { return process.state() == QProcess::NotRunning; }) || process.exitCode() != 0)
        fail(program + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')));
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// nullopt if the shell does not answer, or cannot do it.
std::optional<QString> evaluate(const QString& expression) {
    auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                                       QStringLiteral("org.gnome.Shell"), QStringLiteral("Eval"));
    call << expression;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    if (!reply.arguments().value(0).toBool()) return std::nullopt;
    return reply.arguments().value(1).toString();
}

}  // namespace

Hands::Hands() : session_(RemoteSession::open(QDBusConnection::sessionBus())) {
    if (!session_) fail(QStringLiteral("no remote session"));
    tap(KEY_LEFTSHIFT);
}

void Hands::press(std::initializer_list<std::uint32_t> keys) {
    for (const auto key : keys) session_->notifyKey(key, RemoteSession::KeyState::Down);
}

void Hands::release(std::initializer_list<std::uint32_t> keys) {
    for (const auto key : keys) session_->notifyKey(key, RemoteSession::KeyState::Up);
}

void Hands::tap(std::uint32_t key) {
    press({key});
    release({key});
}

std::optional<QString> Hands::clipboard() {
    if (session_->isOwner()) return session_->offered();
    const UniqueFd pipe = session_->receiveText();
    if (!pipe) return std::nullopt;
    return wayland::readText(pipe, Clock::Deadline(10s));
}

void Hands::copy(const QString& text) {
    bool taken = false;
    QObject::connect(session_.get(), &RemoteSession::textTaken, session_.get(), [&taken] { taken = true; });
    session_->offer(text, Pasteboard::History::Keep);
    if (!waitFor([&] { return taken; })) fail(QStringLiteral("the shell does not take a copy"));
    session_->disconnect(SIGNAL(textTaken()));
}

int remoteSessions() {
    QDBusInterface node(QStringLiteral("org.gnome.Mutter.RemoteDesktop"),
                        QStringLiteral("/org/gnome/Mutter/RemoteDesktop/Session"),
                        QStringLiteral("org.freedesktop.DBus.Introspectable"));
    const QDBusReply<QString> description(node.call(QStringLiteral("Introspect")));
    return static_cast<int>(description.value().count(QLatin1String("<node name=")));
}

QString inShell(const QString& expression) {
    const auto value = evaluate(expression);
    if (!value) fail(expression);
    return *value;
}

bool waitForShell() {
    const QString yes = QStringLiteral("true");
    const QString no = QStringLiteral("false");
    // Without a window it shows its overview, which takes every key.
    return waitFor([&] {
        return evaluate(QStringLiteral("Main.layoutManager._startingUp")) == no &&
               evaluate(QStringLiteral("Main.overview.hide(); true")) == yes &&
               evaluate(QStringLiteral("Main.overview.visible")) == no;
    });
}

bool isServed(const QString& name) {
    const QDBusReply<bool> isThere = QDBusConnection::sessionBus().interface()->isServiceRegistered(name);
    return isThere.isValid() && isThere.value();
}

int boundKeys() {
    return inShell(QStringLiteral("Main.shellDBusService._grabbedAccelerators.size")).toInt();
}

bool isSecretOnClipboard() {
    return inShell(QStringLiteral("global.display.get_selection().get_mimetypes("
                                  "imports.gi.Meta.SelectionType.SELECTION_CLIPBOARD).join(' ')"))
        .contains(QLatin1String("x-kde-passwordManagerHint"));
}

void endLastRemoteSession() {
    // Newer shells have a sign of its own for sessions that are no recordings.
    inShell(
        QStringLiteral("(() => { const signs = Main.panel.statusArea;"
                       " const sessions = [...(signs.screenSharing?._handles ?? []),"
                       " ...signs.quickSettings._remoteAccess._handles];"
                       " sessions.at(-1).stop(); return true; })()"));
}

QString setting(const QString& schema, const QString& key) {
    return run(QStringLiteral("gsettings"), {QStringLiteral("get"), schema, key});
}

void changeSetting(const QString& schema, const QString& key, const QString& value) {
    run(QStringLiteral("gsettings"), {QStringLiteral("set"), schema, key, value});
}

}  // namespace parlivo::desktop::gnome
