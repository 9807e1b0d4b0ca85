// SPDX-License-Identifier: MIT
#include "update/FeedEntry.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace parlivo {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> text(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    if (!value.isString()) return std::nullopt;
    return value.toString();
}

/// False if there is a value of another type.
bool readOptional(const QJsonObject& object, QLatin1StringView key, std::optional<QString>& value) {
    if (!object.contains(key)) return true;
    value = text(object, key);
    return value.has_value();
}

/// A number that a signed 64-bit integer holds exactly.
std::optional<qint64> integer(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    // What cannot be converted reads as whatever was asked for in its stead.
    if (value.toInteger(0) != value.toInteger(1)) return std::nullopt;
    return value.toInteger();
}

}  // namespace

std::optional<FeedEntry> FeedEntry::decode(const QByteArray& feed) {
    const QJsonDocument document = QJsonDocument::fromJson(feed);
    if (!document.isObject()) return std::nullopt;
    const QJsonObject object = document.object();
    const auto version = text(object, "version"_L1);
    const auto url = text(object, "url"_L1);
    const auto changelog = text(object, "changelog"_L1);
    const auto size = integer(object, "size"_L1);
    const auto date = text(object, "date"_L1);
    std::optional<QString> sha256;
    std::optional<QString> signature;
    const bool optionalsAreTexts =
        readOptional(object, "sha256"_L1, sha256) && readOptional(object, "signature"_L1, signature);
    if (!version || !url || !changelog || !size || !date || !optionalsAreTexts) return std::nullopt;
    return FeedEntry{*version,
                     *url,
                     *changelog,
                     *size,
                     *date,
                     sha256,
                     QByteArray::fromBase64(signature.value_or(QString()).toLatin1())};
}

}  // namespace parlivo
