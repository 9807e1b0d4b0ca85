#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace parlivo {

/// What the product's site offers: the newest build.
struct FeedEntry {
    QString version;    ///< dotted numbers
    QString url;        ///< of the zip archive that holds the bundle
    QString changelog;  ///< free text for the user
    qint64 size = 0;    ///< of the archive, in bytes
    QString date;       ///< of the release; kept, not interpreted

    /// Reads the feed: one JSON object with a key for each field, further keys ignored. Nothing when it is
    /// anything else.
    static std::optional<FeedEntry> decode(const QByteArray& feed);
};

}  // namespace parlivo
