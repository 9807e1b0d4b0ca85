// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/linux/session/XdgLoginItem.h"

#include <QDir>
#include <QFile>

namespace parlivo::fuzz {

namespace {

/// Below a configuration folder that is nobody's.
QString entryFile() {
    static const QString path = [] {
        const QString configuration = scratchPath(QStringLiteral("config"));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(configuration));
        QDir().mkpath(configuration + QStringLiteral("/autostart"));
        return configuration + QStringLiteral("/autostart/it.parlivo.Parlivo.desktop");
    }();
    return path;
}

}  // namespace

/// The program's path up to the first NUL, and after that what stands in the entry.
void attack(const QByteArray& input) {
    const QString entry = entryFile();
    const qsizetype end = input.indexOf('\0');
    const QString program = QLatin1Char('/') + QString::fromUtf8(input.left(end));
    XdgLoginItem item(program);
    if (end >= 0) {
        writeFile(entry, input.sliced(end + 1));
        item.isEnabled();
    }
    item.setEnabled(true);
    expect(item.isEnabled(), "what was switched on is on");
    expect(readFile(entry).count('\n') == 6, "the entry has the lines that it should have");
    expect(!XdgLoginItem(program + QLatin1Char('x')).isEnabled(), "another copy is not");
    item.setEnabled(false);
    expect(!item.isEnabled() && !QFile::exists(entry), "what was switched off is off");
}

}  // namespace parlivo::fuzz
