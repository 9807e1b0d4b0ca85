// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace parlivo {

/// What the product's site offers: the newest build.
struct FeedEntry {
    QString version;                               ///< dotted numbers
    QString url;                                   ///< of the zip archive that holds the bundle
    QString changelog;                             ///< free text for the user
    qint64 size = 0;                               ///< of the archive, in bytes
    QString date;                                  ///< of the release; kept, not interpreted
    std::optional<QString> sha256 = std::nullopt;  ///< of the archive, in hexadecimal
    QByteArray signature = {};                     ///< of signedText(); empty if there is none

    /// Reads the feed: one JSON object with a key for each field, of which "sha256" and "signature" (in
    /// Base64) may be missing; further keys are ignored. nullopt if it is anything else.
    static std::optional<FeedEntry> decode(const QByteArray& feed);
};

}  // namespace parlivo
