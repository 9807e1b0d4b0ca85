// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// The private home of a test's Parlivo: settings, models, log and temporary files, where the program itself
/// looks for them. The environment of the test says where that is.
namespace parlivo::desktop::home {

/// Writes the settings of a user who has seen the first-run window; `more` is added to them or replaces them.
void settle(const QJsonObject& more = {});
/// The settings file as it is, without any of that.
void writeSettings(const QByteArray& content);
QByteArray readSettings();
QString settingsFile();
QJsonObject settings();
/// Whether the settings come to count so many dictations.
bool waitForCount(int dictations);
/// Changes one setting as an editor would, in one step, while the program runs.
void set(const QString& key, const QJsonValue& value);
/// The same with several at once.
void set(const QJsonObject& changes);

/// Puts the demonstration's models where the program finds them, unless others are there.
void provideModels();
QString recogniserModel();
QString cleanupModel();
/// The name of a file in the user's own data, such as the cleanup prompt.
QString dataFile(const QString& name);

/// What the program has logged so far.
QString log();

/// The files of recordings that exist now.
QStringList recordings();
/// The regular files below the private folders, the whole of /tmp, that contain `text`; those of the project
/// do not count.
QStringList filesWith(const QByteArray& text);

}  // namespace parlivo::desktop::home
