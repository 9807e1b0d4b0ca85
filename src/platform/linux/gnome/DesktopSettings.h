// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// GNOME's settings, through the command `gsettings`, which comes with them. Each call takes some
/// milliseconds, two seconds at most.
namespace parlivo::gnome::DesktopSettings {

/// Whether the command is there.
bool isAvailable();

/// A value, as the command prints it (GVariant text); nullopt if there is no such schema or key. `schema` may
/// name a path after a colon.
std::optional<QString> value(const QString& schema, const QString& key);
/// All values of a schema, one a line: "SCHEMA KEY VALUE"; empty if there is no such schema.
QStringList values(const QString& schema);
/// False if the value is not stored.
bool set(const QString& schema, const QString& key, const QString& value);
/// All keys of the schema get their defaults back.
void reset(const QString& schema);

/// The strings in a value's text.
QStringList stringsIn(const QString& text);
/// A string, and a list of them, as a value's text.
QString text(const QString& string);
QString text(const QStringList& strings);

}  // namespace parlivo::gnome::DesktopSettings
