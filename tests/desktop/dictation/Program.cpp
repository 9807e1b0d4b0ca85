// SPDX-License-Identifier: MIT
#include "desktop/dictation/Program.h"

#include "support/Http.h"
#include "support/Waiting.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace parlivo::desktop {

namespace {

const auto service = QStringLiteral("it.parlivo.Parlivo");
const auto object = QStringLiteral("/it/parlivo/Parlivo");
const auto interfaceName = QStringLiteral("it.parlivo.Parlivo1");

QString executable(const QString& bundle) {
    return bundle + QStringLiteral("/Contents/MacOS/Parlivo");
}

}  // namespace

QString builtBundle() {
    return QStringLiteral(PARLIVO_TEST_BUNDLE);
}

BundleCopy::BundleCopy() {
    const QDir original(builtBundle() + QStringLiteral("/Contents"));
    const QDir copy(path() + QStringLiteral("/Contents"));
    EXPECT_TRUE(QDir().mkpath(copy.filePath(QStringLiteral("MacOS"))));
    EXPECT_TRUE(QDir().mkpath(copy.filePath(QStringLiteral("Resources"))));
    for (const auto& name : {QStringLiteral("MacOS/Parlivo"), QStringLiteral("Info.plist")}) {
        EXPECT_TRUE(QFile::copy(original.filePath(name), copy.filePath(name))) << qPrintable(name);
    }
    const QDir resources(original.filePath(QStringLiteral("Resources")));
    for (const QString& name : resources.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
        if (name.endsWith(QLatin1String("-server"))) continue;
        EXPECT_TRUE(QFile::link(resources.filePath(name), resource(name))) << qPrintable(name);
    }
}

QString BundleCopy::resource(const QString& name) const {
    return path() + QStringLiteral("/Contents/Resources/") + name;
}

void BundleCopy::putEngine(const QString& name, const QString& program) const {
    QFile::remove(resource(name));
    EXPECT_TRUE(QFile::link(program, resource(name))) << qPrintable(program);
}

void BundleCopy::putEngine(const QString& name, const QByteArray& content,
                           QFile::Permissions permissions) const {
    QFile::remove(resource(name));
    QFile file(resource(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(content), content.size());
    EXPECT_TRUE(file.setPermissions(permissions));
}

void BundleCopy::removeResource(const QString& name) const {
    EXPECT_TRUE(QFile::remove(resource(name))) << qPrintable(name);
}

Program::Program(const QString& bundle, const QProcessEnvironment& environment, const QStringList& wrapper) {
    QDBusConnection::sessionBus().connect(service, object, interfaceName, QStringLiteral("StateChanged"),
                                          this, SLOT(take(QString)));
    const QStringList command = wrapper + QStringList{executable(bundle)};
    process_.setProcessEnvironment(environment);
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.start(command.first(), command.mid(1));
    EXPECT_TRUE(process_.waitForStarted()) << qPrintable(process_.errorString());
}

Program::~Program() {
    process_.kill();
    process_.waitForFinished();
}

Outcome Program::call(const QStringList& arguments, const QString& bundle, const QProcessEnvironment& env) {
    QProcess process;
    process.setProcessEnvironment(env);
    process.start(executable(bundle), arguments);
    // The first instance may live on this thread's events (as the bus does), so no blocking wait.
    EXPECT_TRUE(waitFor([&] { return process.state() == QProcess::NotRunning; }));
    const int status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {status, QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

bool Program::waitUntilUp() const {
    return waitFor([this] { return !state().isEmpty() || !isRunning(); }) && isRunning();
}

bool Program::waitUntilServed(const QString& url) {
    HttpRequest request;
    request.url = QUrl(url);
    request.timeout = std::chrono::seconds(1);
    return waitFor([&] { return Http::exchange(request).status == 200; });
}

QString Program::property(const char* name) const {
    auto get = QDBusMessage::createMethodCall(
        service, object, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << interfaceName << QString::fromLatin1(name);
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get);
    return reply.arguments().value(0).value<QDBusVariant>().variant().toString();
}

bool Program::invoke(const char* method) const {
    const auto call =
        QDBusMessage::createMethodCall(service, object, interfaceName, QString::fromLatin1(method));
    return QDBusConnection::sessionBus().call(call).type() == QDBusMessage::ReplyMessage;
}

bool Program::waitForState(const QString& wanted) const {
    return waitFor([&] { return state() == wanted; });
}

void Program::signal(int number) const {
    ::kill(processId(), number);
}

std::optional<int> Program::waitForExit() {
    waitFor([this] { return !isRunning(); });
    if (isRunning() || process_.exitStatus() != QProcess::NormalExit) return std::nullopt;
    return process_.exitCode();
}

QString Program::errors() {
    return QString::fromUtf8(process_.readAllStandardError());
}

std::vector<Listener> listeners() {
    const auto listening = QStringLiteral("0A");
    std::vector<Listener> found;
    for (const auto& table : {QStringLiteral("/proc/net/tcp"), QStringLiteral("/proc/net/tcp6")}) {
        QFile file(table);
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QStringList lines = QString::fromLatin1(file.readAll()).split(QLatin1Char('\n')).mid(1);
        for (const QString& line : lines) {
            const QStringList columns = line.simplified().split(QLatin1Char(' '));
            if (columns.value(3) != listening) continue;
            const QStringList local = columns[1].split(QLatin1Char(':'));
            found.push_back({local.value(0), static_cast<quint16>(local.value(1).toUInt(nullptr, 16))});
        }
    }
    return found;
}

std::vector<pid_t> processesNamed(const QString& name) {
    std::vector<pid_t> found;
    for (const QString& entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool isProcess = false;
        const int id = entry.toInt(&isProcess);
        if (!isProcess) continue;
        const QString target = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(id));
        if (QFileInfo(target).fileName() == name) found.push_back(id);
    }
    return found;
}

}  // namespace parlivo::desktop
