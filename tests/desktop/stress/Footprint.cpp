// SPDX-License-Identifier: MIT
#include "desktop/stress/Footprint.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <unistd.h>

#include <array>
#include <ostream>

namespace parlivo::desktop {

namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// proc(5): the second number of statm is the resident set, in pages.
qint64 residentOf(const QString& process) {
    return contents(process + QStringLiteral("/statm")).split(' ').value(1).toLongLong() * ::getpagesize();
}

QStringList childrenOf(pid_t parent) {
    QStringList children;
    for (const QString& entry : QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[1-9]*")})) {
        const QByteArray stat = contents(QStringLiteral("/proc/%1/stat").arg(entry));
        // "id (name) state parent ...", where the name may hold anything.
        const qsizetype end = stat.lastIndexOf(')');
        const QList<QByteArray> rest = stat.mid(end + 2).split(' ');
        if (end < 0 || rest.value(1).toLongLong() != parent) continue;
        const qsizetype start = stat.indexOf('(') + 1;
        children.append(QString::fromUtf8(stat.mid(start, end - start) + ' ' + rest.value(0)));
    }
    children.sort();
    return children;
}

QStringList filesBelowPrivateFolders() {
    QStringList files;
    for (const char* folder : {"HOME", "TMPDIR", "XDG_RUNTIME_DIR"}) {
        QDirIterator found(qEnvironmentVariable(folder), QDir::Files | QDir::Hidden | QDir::System,
                           QDirIterator::Subdirectories);
        while (found.hasNext()) files.append(found.next());
    }
    files.sort();
    return files;
}

}  // namespace

Footprint Footprint::of(pid_t process) {
    const QString folder = QStringLiteral("/proc/%1").arg(process);
    return {.resident = residentOf(folder),
            .descriptors = QDir(folder + QStringLiteral("/fd"))
                               .entryList(QDir::NoDotAndDotDot | QDir::System | QDir::AllEntries)
                               .size(),
            .children = childrenOf(process),
            .files = filesBelowPrivateFolders()};
}

std::ostream& operator<<(std::ostream& stream, const Footprint& footprint) {
    return stream << footprint.resident / 1024 << " KiB resident, " << footprint.descriptors
                  << " descriptors, " << footprint.children.size() << " children, " << footprint.files.size()
                  << " files";
}

}  // namespace parlivo::desktop
