#include "settings/Config.h"

#include "platform/Platform.h"

#include <QDir>
#include <QMetaType>

#include <algorithm>

namespace parlivo::Config {

namespace {

QVariant stored(const QString& key) {
    return Platform::current().userDefaults().value(key);
}

bool isPresent(const QVariant& value) {
    return value.isValid() && !value.isNull();
}

bool isNumber(const QVariant& value) {
    const int type = value.typeId();
    return type == QMetaType::LongLong || type == QMetaType::Int || type == QMetaType::Double;
}

/// Texts that a settings store traditionally reads as true.
bool saysTrue(const QString& text) {
    const QString word = text.trimmed().toLower();
    return word == QLatin1String("true") || word == QLatin1String("yes") || word == QLatin1String("1");
}

bool asBoolean(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool) return value.toBool();
    if (isNumber(value)) return value.toDouble() != 0;
    if (value.typeId() == QMetaType::QString) return saysTrue(value.toString());
    return false;
}

qint64 asInteger(const QVariant& value) {
    if (isNumber(value) || value.typeId() == QMetaType::Bool || value.typeId() == QMetaType::QString) {
        return value.toLongLong();
    }
    return 0;
}

/// The line ends of Unicode (UAX #14: LF, VT, FF, CR, NEL, LS, PS).
bool isLineEnd(QChar c) {
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

QString createdAppSupportDir() {
    QString path = Platform::current().directories().applicationSupport() + QStringLiteral("/Parlivo");
    QDir().mkpath(path);
    return path;
}

}  // namespace

bool boolean(const QString& key, bool absent) {
    const QVariant value = stored(key);
    return isPresent(value) ? asBoolean(value) : absent;
}

std::optional<QString> string(const QString& key) {
    const QVariant value = stored(key);
    if (value.typeId() != QMetaType::QString) return std::nullopt;
    return value.toString();
}

QString string(const QString& key, const QString& absent) {
    return string(key).value_or(absent);
}

qint64 integer(const QString& key, qint64 absent) {
    const QVariant value = stored(key);
    return isPresent(value) ? asInteger(value) : absent;
}

void set(const QString& key, const QVariant& value) {
    Platform::current().userDefaults().setValue(key, value);
}

void remove(const QString& key) {
    Platform::current().userDefaults().remove(key);
}

QString appSupportDir() {
    static const QString path = createdAppSupportDir();
    return path;
}

QString modelsDir() {
    const QString chosen = string(Key::modelsDir, {});
    return chosen.isEmpty() ? appSupportDir() + QStringLiteral("/models") : chosen;
}

QString promptFile() {
    return appSupportDir() + QStringLiteral("/prompt.txt");
}

QString resourceOrHome(const QString& resource, const QString& belowHome) {
    const auto bundled = Platform::current().bundle().resource(resource);
    return bundled ? *bundled : Platform::current().directories().home() + QLatin1Char('/') + belowHome;
}

QString whisperServer() {
    return resourceOrHome(QStringLiteral("whisper-server"),
                          QStringLiteral("Projects/Parlivo/whisper.cpp/build/bin/whisper-server"));
}

QString llamaServerBinary() {
    return resourceOrHome(QStringLiteral("llama-server"),
                          QStringLiteral("Projects/Parlivo/llama.cpp/build/bin/llama-server"));
}

QStringList dictionary() {
    QString text = string(Key::dictionary, {});
    std::replace_if(text.begin(), text.end(), isLineEnd, QLatin1Char('\n'));
    QStringList terms;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QString term = line.trimmed();
        if (!term.isEmpty()) terms.append(term);
    }
    return terms;
}

qint64 cleanupMinChars() {
    return integer(Key::cleanupMinChars, 50);
}

std::optional<QDateTime> feedbackPromptLastShown() {
    const auto moment = QDateTime::fromString(string(Key::feedbackPromptLastShown, {}), Qt::ISODateWithMs);
    if (!moment.isValid()) return std::nullopt;
    return moment;
}

void setFeedbackPromptLastShown(const QDateTime& moment) {
    set(Key::feedbackPromptLastShown, moment.toUTC().toString(Qt::ISODateWithMs));
}

QString appVersion() {
    return Platform::current().bundle().shortVersion().value_or(QStringLiteral("0.0.0"));
}

QUrl ollamaURL() {
    return QUrl(QStringLiteral("http://127.0.0.1:11434/api/generate"));
}

QUrl siteBase() {
    return QUrl(qEnvironmentVariable("PARLIVO_SITE_BASE", QStringLiteral(PARLIVO_SITE_BASE)));
}

}  // namespace parlivo::Config
