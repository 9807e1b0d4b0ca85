// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

/// The compositor of the test, asked over its own socket (SWAYSOCK).
namespace parlivo::desktop::sway {

/// The application ids of all windows.
QStringList applications();
/// The application id of the window with the keyboard focus; empty if none has it.
QString focusedApplication();

/// The titles of all windows.
QStringList titles();
/// The title of the window with the keyboard focus; empty if none has it.
QString focusedTitle();
/// Runs a command of sway's. False if it is refused.
bool accepts(const QString& command);
/// The same; throws Error if it is refused.
void command(const QString& command);
/// Ends it as a crash does.
void kill();
/// What the screens show now.
QImage screenshot();

/// What wl-paste gives for a place; `type` as it takes it.
QByteArray clipboard(const QStringList& options = {});
/// Another program takes the clipboard.
void copy(const QByteArray& content, const QStringList& options = {});

}  // namespace parlivo::desktop::sway
