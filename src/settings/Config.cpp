// SPDX-License-Identifier: MIT
#include "settings/Config.h"

#include "platform/Platform.h"

#include <QCoreApplication>
#include <QDir>
#include <QMetaType>

#include <algorithm>
#include <cmath>

namespace parlivo::Config {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Config)
};

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

std::optional<qint64> whole(double number) {
    // 2^63: the first double above all 64-bit integers.
    constexpr double limit = 9223372036854775808.0;
    if (number < -limit || number >= limit || number != std::trunc(number)) return std::nullopt;
    return static_cast<qint64>(number);
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

/// The whole number that is stored, as a number or as a text; nullopt if it is none.
std::optional<qint64> asInteger(const QVariant& value) {
    if (value.typeId() == QMetaType::Double) return whole(value.toDouble());
    if (!isNumber(value) && value.typeId() != QMetaType::QString) return std::nullopt;
    bool isOne = false;
    const qint64 number = value.toLongLong(&isOne);
    return isOne ? std::optional(number) : std::nullopt;
}

void store(const QString& key, const QVariant& value) {
    Platform::current().userDefaults().setValue(key, value);
}

/// The line ends of Unicode (UAX #14: LF, VT, FF, CR, NEL, LS, PS).
bool isLineEnd(QChar c) {
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

QString siteBaseText() {
    return qEnvironmentVariable("PARLIVO_SITE_BASE", QStringLiteral(PARLIVO_SITE_BASE));
}

QString modelHostText() {
    return qEnvironmentVariable("PARLIVO_MODEL_HOST", QStringLiteral(PARLIVO_MODEL_HOST));
}

QString withoutSlash(QString address) {
    while (address.endsWith(QLatin1Char('/'))) address.chop(1);
    return address;
}

bool isAddress(const QUrl& url) {
    const bool isWeb = url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    return url.isValid() && isWeb && !url.host().isEmpty();
}

QString problemOf(const QString& variable, const QString& address) {
    return Texts::tr("%1 non è un indirizzo http o https: «%2»").arg(variable, address);
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

qint64 get(const Setting<qint64>& setting) {
    return asInteger(stored(setting.key)).value_or(setting.absent);
}

QString get(const Setting<QString>& setting) {
    return string(setting.key).value_or(setting.absent);
}

std::optional<QString> get(const Setting<std::optional<QString>>& setting) {
    return string(setting.key);
}

std::optional<QDateTime> get(const Setting<std::optional<QDateTime>>& setting) {
    const QVariant value = stored(setting.key);
    const auto moment =
        value.typeId() == QMetaType::QDateTime
            ? value.toDateTime()
            : QDateTime::fromString(string(setting.key).value_or(QString()), Qt::ISODateWithMs);
    if (!moment.isValid()) return std::nullopt;
    return moment;
}

void set(const Setting<bool>& setting, bool value) {
    store(setting.key, value);
}

void set(const Setting<qint64>& setting, qint64 value) {
    store(setting.key, value);
}

void set(const Setting<QString>& setting, const QString& value) {
    store(setting.key, value);
}

void set(const Setting<std::optional<QString>>& setting, const QString& value) {
    store(setting.key, value);
}

void set(const Setting<std::optional<QDateTime>>& setting, const QDateTime& value) {
    store(setting.key, value.toUTC());
}

void remove(const QString& key) {
    Platform::current().userDefaults().remove(key);
}

void flush() {
    Platform::current().userDefaults().flush();
}

QString appSupportDir() {
    static const QString path = createdAppSupportDir();
    return path;
}

QString modelsDir() {
    const QString chosen = get(Settings::modelsDir);
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
    QString text = get(Settings::dictionary);
    std::replace_if(text.begin(), text.end(), isLineEnd, QLatin1Char('\n'));
    QStringList terms;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QString term = line.trimmed();
        if (!term.isEmpty()) terms.append(term);
    }
    return terms;
}

QString appVersion() {
    return Platform::current().bundle().shortVersion().value_or(QStringLiteral("0.0.0"));
}

QUrl ollamaURL() {
    return QUrl(QStringLiteral("http://127.0.0.1:11434/api/generate"));
}

QUrl siteBase() {
    return QUrl(withoutSlash(siteBaseText()), QUrl::StrictMode);
}

QUrl modelHost() {
    return QUrl(withoutSlash(modelHostText()), QUrl::StrictMode);
}

std::optional<QString> addressProblem() {
    if (!isAddress(siteBase())) return problemOf(QStringLiteral("PARLIVO_SITE_BASE"), siteBaseText());
    if (!isAddress(modelHost())) return problemOf(QStringLiteral("PARLIVO_MODEL_HOST"), modelHostText());
    return std::nullopt;
}

}  // namespace parlivo::Config
