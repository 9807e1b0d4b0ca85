// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QFile>

#include <vector>

namespace parlivo {

/// The ids of the processes that a process has started and that have not been reaped (proc(5)).
inline std::vector<qint64> childProcessesOf(qint64 parent) {
    std::vector<qint64> children;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString& process : processes) {
        QFile file(QStringLiteral("/proc/%1/stat").arg(process));
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QByteArray status = file.readAll();
        // The name in brackets may itself hold blanks and brackets; then come the state and the parent.
        const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
        if (fields.value(1).toLongLong() == parent) children.push_back(process.toLongLong());
    }
    return children;
}

/// Whether the process is there and no zombie.
inline bool lives(qint64 process) {
    QFile status(QStringLiteral("/proc/%1/stat").arg(process));
    return status.open(QIODevice::ReadOnly) && !status.readAll().contains(") Z ");
}

}  // namespace parlivo
