// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "update/FeedEntry.h"
#include "update/Versions.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace parlivo::fuzz {

using namespace Qt::StringLiterals;

namespace {

QByteArray encode(const FeedEntry& entry) {
    QJsonObject object{
        {u"version"_s, entry.version},     {u"url"_s, entry.url},
        {u"changelog"_s, entry.changelog}, {u"size"_s, entry.size},
        {u"date"_s, entry.date},           {u"signature"_s, QString::fromLatin1(entry.signature.toBase64())}};
    if (entry.sha256) object[u"sha256"_s] = *entry.sha256;
    return QJsonDocument(object).toJson();
}

}  // namespace

void attack(const QByteArray& input) {
    const auto entry = FeedEntry::decode(input);
    if (!entry) return;
    const QString current = u"1.0.0"_s;
    expect(!isNewer(entry->version, current) || !isNewer(current, entry->version), "one of two is newer");
    // Half a surrogate pair has no place in JSON.
    for (const QString& text :
         {entry->version, entry->url, entry->changelog, entry->date, entry->sha256.value_or(QString())}) {
        if (!text.isValidUtf16()) return;
    }
    const auto again = FeedEntry::decode(encode(*entry));
    expect(again && again->version == entry->version && again->url == entry->url &&
               again->changelog == entry->changelog && again->size == entry->size &&
               again->date == entry->date && again->sha256 == entry->sha256 &&
               again->signature == entry->signature,
           "what was read can be written and read again");
}

}  // namespace parlivo::fuzz
