// SPDX-License-Identifier: MIT
#pragma once

#include "platform/HotKeyService.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace parlivo::gnome {

/// The entry of this program in the list of GNOME's own key combinations, which the user sees and can change
/// in the desktop's settings too. It runs a command on each press. What was read is kept until `forget`.
/// Main thread.
class CustomBinding {
  public:
    /// `command` is what the key runs, as a shell would read it.
    explicit CustomBinding(QString command) : command_(std::move(command)) {}

    /// Whether the entry is there.
    bool exists();
    /// Its combination; empty if there is none.
    QString accelerator();
    /// Makes the entry, or changes it. False if GNOME's settings do not take it.
    bool assign(const QString& accelerator);
    /// Takes the entry away.
    void remove();
    /// Gives the entry the right command if it has another: the program has been moved.
    void mendCommand();

    /// Whether GNOME, or another entry of its list, has this combination.
    bool isHeld(KeyCode key, HotKeyModifiers modifiers);

    /// What was read may be out of date.
    void forget();

  private:
    QStringList list();
    void forgetEntry();

    const QString command_;
    std::optional<QStringList> list_;  // the paths of all entries
    std::optional<QString> accelerator_;
    std::optional<QStringList> held_;
};

}  // namespace parlivo::gnome
