// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Sentences on the hot key that is in force. Main thread.
namespace parlivo {

/// `text` with the chosen keys in the place of its "%1"; while they cannot be had it says that a key is still
/// to be chosen. The texts of macOS have none: they name ⌥Spazio, whatever is chosen.
QString withHotKeyTitle(QString text);

/// One sentence on the hot key, for each kind of system.
struct HotKeySentence {
    QString held;     ///< where it is held while the user speaks
    QString pressed;  ///< where the system tells of presses only
    QString none;     ///< where the system has no hot keys
};
/// The one that is true here and now; HotKeyStatus::changed tells when it may be another.
QString hotKeySentence(const HotKeySentence& sentence);

}  // namespace parlivo
