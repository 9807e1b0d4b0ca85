// SPDX-License-Identifier: MIT
#include "desktops/SessionService.h"

#include "support/Error.h"
#include "support/Waiting.h"

#include <QFile>
#include <QProcessEnvironment>

#include <csignal>

namespace parlivo::desktop::gnome {

namespace {

[[noreturn]] void fail(const QString& what) {
    throw Error(QStringLiteral("desktop test"), 8, what);
}

QString idFile(const QString& name) {
    return QStringLiteral("%1/desktop/%2.pid").arg(qEnvironmentVariable("XDG_RUNTIME_DIR"), name);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The strings of a file below /proc that ends each with a zero byte (proc(5)).
QStringList stringsOf(pid_t process, const QString& file) {
    QStringList strings;
    for (const QByteArray& string :
         contentOf(QStringLiteral("/proc/%1/%2").arg(process).arg(file)).split('\0'))
        strings.append(QString::fromLocal8Bit(string));
    if (!strings.isEmpty()) strings.removeLast();
    return strings;
}

/// Ended processes stay in the table until their parent has heard of it, with nothing to read about them.
bool isGone(pid_t process) {
    return stringsOf(process, QStringLiteral("cmdline")).isEmpty();
}

}  // namespace

bool SessionService::exists(const QString& name) {
    return QFile::exists(idFile(name));
}

SessionService::SessionService(const QString& name) : process_(contentOf(idFile(name)).trimmed().toInt()) {
    if (process_ == 0) fail(name + QStringLiteral(" was not started"));
    command_ = stringsOf(process_, QStringLiteral("cmdline"));
    if (command_.isEmpty()) fail(name + QStringLiteral(" has ended"));
    QProcessEnvironment environment;
    for (const QString& variable : stringsOf(process_, QStringLiteral("environ")))
        environment.insert(variable.section(QLatin1Char('='), 0, 0), variable.section(QLatin1Char('='), 1));
    next_.setProcessEnvironment(environment);
    next_.setStandardOutputFile(QProcess::nullDevice());
    next_.setStandardErrorFile(QProcess::nullDevice());
}

SessionService::~SessionService() {
    next_.terminate();
    if (waitFor([this] { return next_.state() == QProcess::NotRunning; }, std::chrono::seconds(5))) return;
    next_.kill();
    next_.waitForFinished();
}

void SessionService::kill() {
    ::kill(process_, SIGKILL);
    if (!waitFor([this] { return isGone(process_); })) fail(command_.first() + QStringLiteral(" lives on"));
}

void SessionService::restart() {
    next_.start(command_.first(), command_.mid(1));
    if (!next_.waitForStarted()) fail(command_.first() + QStringLiteral(" does not start"));
}

}  // namespace parlivo::desktop::gnome
