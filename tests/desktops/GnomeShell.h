// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/gnome/RemoteSession.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>

namespace parlivo::desktop::gnome {

/// The user's keyboard in a session of GNOME's. One without a screen has none of its own, and windows that
/// meet the first one lose a key; so it lives as long as the test.
class Hands {
  public:
    Hands();

    void press(std::initializer_list<std::uint32_t> keys);
    void release(std::initializer_list<std::uint32_t> keys);
    void tap(std::uint32_t key);

    /// What another program gets from the clipboard.
    std::optional<QString> clipboard();
    /// Another program takes the clipboard.
    void copy(const QString& text);

  private:
    std::unique_ptr<parlivo::gnome::RemoteSession> session_;
};

/// How many sessions of remote operation the shell has now, the test's own included.
int remoteSessions();

/// What the shell gives for an expression; throws Error if it cannot.
QString inShell(const QString& expression);
/// Waits until a shell that has been started anew takes keys. False if that does not happen in time.
bool waitForShell();
/// Whether somebody has this name on the session bus.
bool isServed(const QString& name);
/// How many key combinations programs have been given by the shell.
int boundKeys();
/// Whether the clipboard holds a text that is marked as secret, as one has that is being pasted. Nobody is
/// asked for it.
bool isSecretOnClipboard();
/// The user ends the session that was opened last, by the shell's own sign for it.
void endLastRemoteSession();

/// A setting as `gsettings` prints it; `schema` may name a path after a colon.
QString setting(const QString& schema, const QString& key);
void changeSetting(const QString& schema, const QString& key, const QString& value);

}  // namespace parlivo::desktop::gnome
