// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace parlivo {

/// A message that waits for an answer.
struct Alert {
    QString message;
    QString informativeText;
    /// From the first, which Return chooses, to the last, which Escape chooses.
    QStringList buttons;

    /// Whether the user is waiting for it.
    enum class Arrival {
        Expected,  ///< it takes the keyboard
        Unbidden,  ///< the user may be typing: what is typed does not answer it
    };
    Arrival arrival = Arrival::Expected;
};

/// Modal questions to the user. Main thread; every operation runs an event loop until the user has answered.
/// A test installs its own, which answers at once.
class Dialogs {
  public:
    virtual ~Dialogs() = default;

    /// Brings the program to the front and returns the index of the button that was chosen; that of the last
    /// one if the alert was closed without a button.
    virtual int ask(const Alert& alert) = 0;

    /// An existing or newly created folder, as an absolute path; nullopt if the user cancels. `prompt` is the
    /// label of the button that confirms.
    virtual std::optional<QString> chooseFolder(const QString& startingIn, const QString& prompt) = 0;

    static Dialogs& current();
    /// nullptr restores the desktop's own.
    static void install(std::unique_ptr<Dialogs> dialogs);
};

}  // namespace parlivo
