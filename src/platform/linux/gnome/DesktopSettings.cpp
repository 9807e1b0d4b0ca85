// SPDX-License-Identifier: MIT
#include "platform/linux/gnome/DesktopSettings.h"

#include <QProcess>
#include <QStandardPaths>

namespace parlivo::gnome::DesktopSettings {

namespace {

constexpr int timeout = 2000;  // ms

const QString& program() {
    static const QString found = QStandardPaths::findExecutable(QStringLiteral("gsettings"));
    return found;
}

/// Not by ChildProcess, because it must not be called on the main thread.
std::optional<QString> run(const QStringList& arguments) {
    QProcess process;
    process.start(program(), arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(timeout) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        return std::nullopt;
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

}  // namespace

bool isAvailable() {
    return !program().isEmpty();
}

std::optional<QString> value(const QString& schema, const QString& key) {
    return run({QStringLiteral("get"), schema, key});
}

QStringList values(const QString& schema) {
    return run({QStringLiteral("list-recursively"), schema})
        .value_or(QString())
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool set(const QString& schema, const QString& key, const QString& value) {
    return run({QStringLiteral("set"), schema, key, value}).has_value();
}

void reset(const QString& schema) {
    run({QStringLiteral("reset-recursively"), schema});
}

/// A string stands between single quotes, or between double ones if it has single ones itself.
/// https://docs.gtk.org/glib/gvariant-text-format.html
QStringList stringsIn(const QString& text) {
    QStringList strings;
    QChar quote;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (quote.isNull()) {
            if (character != QLatin1Char('\'') && character != QLatin1Char('"')) continue;
            quote = character;
            strings.append(QString());
        } else if (character == quote) {
            quote = QChar();
        } else {
            if (character == QLatin1Char('\\') && i + 1 < text.size()) ++i;
            strings.last() += text[i];
        }
    }
    return strings;
}

QString text(const QString& string) {
    QString escaped = string;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QLatin1Char('\'') + escaped + QLatin1Char('\'');
}

QString text(const QStringList& strings) {
    if (strings.isEmpty()) return QStringLiteral("@as []");
    QStringList quoted;
    for (const QString& string : strings) quoted.append(text(string));
    return QLatin1Char('[') + quoted.join(QLatin1String(", ")) + QLatin1Char(']');
}

}  // namespace parlivo::gnome::DesktopSettings
