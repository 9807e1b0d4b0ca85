// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

/// The fixed list of model files that can be downloaded and used. Any thread.
namespace parlivo::ModelCatalog {

/// One tier.
struct Entry {
    QString id;
    QString label;
    /// One line for the user; its sizes are for display only.
    QString detail;
    /// Below the models folder; empty for the tier that needs no file.
    QString fileName;
    QUrl url;
    /// Exact size of the complete file in bytes; 0 = unknown or no file.
    qint64 expectedSize = 0;
    /// Of the file's bytes, as its makers publish it: 40 hexadecimal digits; empty = not published.
    QByteArray sha1{};
};

/// Speech recognition.
const std::vector<Entry>& asrTiers();
/// Text cleanup; one tier needs no file and cleans nothing.
const std::vector<Entry>& cleanupTiers();

/// The tier of this id; an unknown one means the setting's default.
const Entry& asrTier(const QString& id);
const Entry& cleanupTier(const QString& id);

/// Whether the entry's file is in the models folder and complete. Size is looked at on each call: half a
/// model taken for a whole one would block a user for good.
bool isDownloaded(const Entry& entry);

/// The tier of the list that is used while the file of `chosen` is not there: another one whose file is.
/// nullptr if there is none, or no need of one.
const Entry* standInFor(const Entry& chosen, const std::vector<Entry>& tiers);

/// Why an entry's file cannot be used.
struct Fault {
    QString message;  ///< for the user
    QString detail;   ///< for the log, with the file's whole path
};
/// nullopt if it is downloaded.
std::optional<Fault> faultOf(const Entry& entry);

}  // namespace parlivo::ModelCatalog
