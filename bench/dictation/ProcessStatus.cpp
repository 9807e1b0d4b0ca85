// SPDX-License-Identifier: MIT
#include "dictation/ProcessStatus.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

namespace parlivo::bench {

namespace {

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The sum of the numbers behind lines that begin with `name`.
qint64 sumOf(const QByteArray& content, const QByteArray& name) {
    qint64 sum = 0;
    for (const QByteArray& line : content.split('\n')) {
        if (line.startsWith(name)) sum += line.mid(name.size()).replace("kB", "").trimmed().toLongLong();
    }
    return sum;
}

}  // namespace

Memory memoryOf(pid_t process) {
    constexpr double kilobytes = 1'024;
    const QByteArray content = read(QStringLiteral("/proc/%1/smaps_rollup").arg(process));
    const auto megabytes = [&](const char* name) {
        return static_cast<double>(sumOf(content, name)) / kilobytes;
    };
    return {megabytes("Rss:"), megabytes("Private_Clean:") + megabytes("Private_Dirty:")};
}

std::int64_t sleepsOf(pid_t process) {
    const QDir tasks(QStringLiteral("/proc/%1/task").arg(process));
    std::int64_t sleeps = 0;
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray status = read(tasks.filePath(task + QStringLiteral("/status")));
        sleeps += sumOf(status, "voluntary_ctxt_switches:") + sumOf(status, "nonvoluntary_ctxt_switches:");
    }
    return sleeps;
}

}  // namespace parlivo::bench
