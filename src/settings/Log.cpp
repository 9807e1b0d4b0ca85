// SPDX-License-Identifier: MIT
#include "settings/Log.h"

#include "platform/Platform.h"
#include "support/OwnerOnly.h"
#include "support/SerialQueue.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

namespace parlivo::Log {

namespace {

SerialQueue& queue() {
    static SerialQueue instance(QStringLiteral("parlivo.log"), SerialQueue::AtEnd::FinishWaiting);
    return instance;
}

QByteArray record(const QString& message) {
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    return (QLatin1Char('[') + time + QStringLiteral("] ") + message + QLatin1Char('\n')).toUtf8();
}

bool append(const QString& file, const QByteArray& line) {
    QFile log(file);
    return log.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::ExistingOnly) &&
           log.write(line) == line.size();
}

void write(const QString& message) {
    const QByteArray line = record(message);
    if (!append(path(), line) && !QFile::exists(path())) replaceOwnerOnlyFile(path(), line);
}

QString createdPath() {
    const QString folder = Platform::current().directories().logs();
    QDir().mkpath(folder);
    return folder + QStringLiteral("/Parlivo.log");
}

}  // namespace

void info(const QString& message) {
    queue().async([message] { write(message); });
}

QString path() {
    static const QString file = createdPath();
    return file;
}

void flush() {
    queue().waitUntilDone();
}

}  // namespace parlivo::Log
