// SPDX-License-Identifier: MIT
#pragma once

#include "settings/Settings.h"

#include <QDateTime>
#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <optional>

/// Reads and writes the settings (Settings.h) and knows every place on disk. Stateless: each call reads the
/// store afresh, so a change counts from the next use on. No accessor fails; what is missing or of another
/// type reads as absent. Any thread.
///
/// Paths are absolute. What concerns models is in models/ModelPaths.h, the cleanup prompt in
/// engines/CleanupPrompt.h.
namespace parlivo::Config {

/// The stored boolean if there is any object under `key` (a number counts as "not zero", a text as true if it
/// says so, anything else as false), otherwise `absent`.
bool boolean(const QString& key, bool absent);
/// The stored text; nullopt if no text is stored.
std::optional<QString> string(const QString& key);

inline bool get(const Setting<bool>& setting) {
    return boolean(setting.key, setting.absent);
}
/// A whole number, also one that is stored as a text. What is no 64-bit integer, 3.7 or 1e300, counts as
/// absent.
qint64 get(const Setting<qint64>& setting);
QString get(const Setting<QString>& setting);
std::optional<QString> get(const Setting<std::optional<QString>>& setting);
std::optional<QDateTime> get(const Setting<std::optional<QDateTime>>& setting);
template <Enumeration T>
T get(const Setting<T>& setting) {
    const auto word = string(setting.key);
    if (!word) return setting.absent;
    const auto found = std::ranges::find(storedWords<T>, *word);
    return found == storedWords<T>.end() ? setting.unknown : static_cast<T>(found - storedWords<T>.begin());
}

void set(const Setting<bool>& setting, bool value);
void set(const Setting<qint64>& setting, qint64 value);
void set(const Setting<QString>& setting, const QString& value);
void set(const Setting<std::optional<QString>>& setting, const QString& value);
/// Stored to the millisecond.
void set(const Setting<std::optional<QDateTime>>& setting, const QDateTime& value);
/// The setting counts as absent from now on.
void remove(const QString& key);
template <typename T>
void remove(const Setting<T>& setting) {
    remove(setting.key);
}

/// Returns when the disk has every change, which otherwise follows within a second.
void flush();

/// The folder "Parlivo" under the user's application support; created on first use, once a process.
QString appSupportDir();
QString modelsDir();
QString promptFile();
/// The engines: from the bundle, else where a developer builds them. Whether the file exists is found out by
/// its user.
QString whisperServer();
QString llamaServerBinary();

/// The user's terms, one a line in the setting, trimmed, in their order.
QStringList dictionary();

QString appVersion();
QUrl ollamaURL();
/// The product's web site and the host of the models, without a slash at their end. The environment variables
/// PARLIVO_SITE_BASE and PARLIVO_MODEL_HOST override what was built in.
QUrl siteBase();
QUrl modelHost();
/// What is wrong with one of the two, for the user; nullopt if both are http or https addresses with a host.
std::optional<QString> addressProblem();

/// The bundle's resource of this name, or else this path below the user's home, where a developer builds it.
QString resourceOrHome(const QString& resource, const QString& belowHome);

}  // namespace parlivo::Config
