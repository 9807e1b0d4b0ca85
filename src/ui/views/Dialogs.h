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
};

/// What only the user can answer. Main thread; every operation waits for the answer, with the program going
/// on meanwhile. A test installs its own, which answers by itself.
class Dialogs {
  public:
    virtual ~Dialogs() = default;

    /// Brings the program to the front and returns the index of the button that was chosen; the last one's
    /// when the alert was closed otherwise.
    virtual int ask(const Alert& alert) = 0;

    /// An existing or freshly made folder, as an absolute path; nothing when the user thought better of it.
    /// `prompt` stands on the button that chooses.
    virtual std::optional<QString> chooseFolder(const QString& startingIn, const QString& prompt) = 0;

    static Dialogs& current();
    /// Nothing puts the desktop's own back.
    static void install(std::unique_ptr<Dialogs> dialogs);
};

}  // namespace parlivo
