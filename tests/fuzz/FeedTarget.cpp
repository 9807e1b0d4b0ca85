#include "FuzzTarget.h"
#include "update/FeedEntry.h"
#include "update/Versions.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace parlivo::fuzz {

using namespace Qt::StringLiterals;

namespace {

QByteArray encode(const FeedEntry& entry) {
    return QJsonDocument(QJsonObject{{u"version"_s, entry.version},
                                     {u"url"_s, entry.url},
                                     {u"changelog"_s, entry.changelog},
                                     {u"size"_s, entry.size},
                                     {u"date"_s, entry.date}})
        .toJson();
}

}  // namespace

void attack(const QByteArray& input) {
    const auto entry = FeedEntry::decode(input);
    if (!entry) return;
    const QString current = u"1.0.0"_s;
    expect(!isNewer(entry->version, current) || !isNewer(current, entry->version), "one of two is newer");
    // Half a surrogate pair has no place in JSON.
    for (const QString& text : {entry->version, entry->url, entry->changelog, entry->date}) {
        if (!text.isValidUtf16()) return;
    }
    const auto again = FeedEntry::decode(encode(*entry));
    expect(again && again->version == entry->version && again->url == entry->url &&
               again->changelog == entry->changelog && again->size == entry->size &&
               again->date == entry->date,
           "what was read can be written and read again");
}

}  // namespace parlivo::fuzz
