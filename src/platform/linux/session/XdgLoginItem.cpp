// SPDX-License-Identifier: MIT
#include "platform/linux/session/XdgLoginItem.h"

#include "platform/linux/base/XdgDirectories.h"
#include "support/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <utility>

namespace parlivo {

namespace {

QString entryPath() {
    return XdgDirectories::configurationHome() + QStringLiteral("/autostart/it.parlivo.Parlivo.desktop");
}

/// A string as a desktop entry has it, where a line is a key: no line of its own can come out of one.
/// https://specifications.freedesktop.org/desktop-entry-spec/latest/value-types.html
QString toEntry(QString text) {
    return text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char('\n'), QStringLiteral("\\n"))
        .replace(QLatin1Char('\r'), QStringLiteral("\\r"));
}

QString fromEntry(const QString& value) {
    static const QHash<QChar, QChar> meanings{
        {u's', u' '}, {u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}, {u'\\', u'\\'}};
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar next = value[i] == u'\\' && i + 1 < value.size() ? value[i + 1] : QChar();
        const bool isEscape = meanings.contains(next);
        text += isEscape ? meanings.value(next) : value[i];
        if (isEscape) ++i;
    }
    return text;
}

/// An argument of Exec: in quotes, with a backslash before what stays special inside them, and "%" doubled.
/// https://specifications.freedesktop.org/desktop-entry-spec/latest/exec-variables.html
QString quoted(const QString& argument) {
    QString result;
    for (const QChar c : argument) {
        if (QStringLiteral("\"`$\\").contains(c)) result += QLatin1Char('\\');
        result += c;
    }
    result.replace(QLatin1Char('%'), QStringLiteral("%%"));
    return QLatin1Char('"') + result + QLatin1Char('"');
}

QString unescaped(const QString& text) {
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('\\') && i + 1 < text.size()) ++i;
        result += text[i];
    }
    return result;
}

/// The program that an Exec value starts.
QString programOf(const QString& value) {
    const QString exec = fromEntry(value);
    if (!exec.startsWith(QLatin1Char('"'))) return exec.section(QLatin1Char(' '), 0, 0);
    qsizetype end = 1;
    while (end < exec.size() && exec[end] != QLatin1Char('"')) end += exec[end] == QLatin1Char('\\') ? 2 : 1;
    return unescaped(exec.mid(1, end - 1)).replace(QStringLiteral("%%"), QStringLiteral("%"));
}

/// The entry's own group, key -> value as written.
QHash<QString, QString> readEntry() {
    QHash<QString, QString> entry;
    QFile file(entryPath());
    if (!file.open(QIODevice::ReadOnly)) return entry;
    bool ours = false;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1Char('['))) ours = line.trimmed() == QStringLiteral("[Desktop Entry]");
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (ours && equals > 0) entry.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return entry;
}

bool isSwitchedOff(const QHash<QString, QString>& entry) {
    return entry.value(QStringLiteral("Hidden")) == QStringLiteral("true") ||
           entry.value(QStringLiteral("X-GNOME-Autostart-enabled")) == QStringLiteral("false");
}

}  // namespace

XdgLoginItem::XdgLoginItem(QString program) : program_(std::move(program)) {}

bool XdgLoginItem::isEnabled() {
    const auto entry = readEntry();
    if (entry.isEmpty() || isSwitchedOff(entry)) return false;
    const QString started = programOf(entry.value(QStringLiteral("Exec")));
    return started == program_ ||
           (!QFileInfo(program_).canonicalFilePath().isEmpty() &&
            QFileInfo(started).canonicalFilePath() == QFileInfo(program_).canonicalFilePath());
}

void XdgLoginItem::setEnabled(bool enabled) {
    if (enabled) return write();
    QFile entry(entryPath());
    if (entry.exists() && !entry.remove()) throw Error::file(entry);
}

void XdgLoginItem::write() const {
    const QString path = entryPath();
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile entry(path);
    const QString text = QStringLiteral(
                             "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Parlivo\n"
                             "Comment=Dettatura locale\n"
                             "Exec=%1\n"
                             "Terminal=false\n")
                             .arg(toEntry(quoted(program_)));
    if (!entry.open(QIODevice::WriteOnly) || entry.write(text.toUtf8()) < 0 || !entry.commit()) {
        throw Error::file(entry);
    }
}

}  // namespace parlivo
