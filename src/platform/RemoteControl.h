// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace parlivo {

/// What another program, a second start or a script may ask of the running one.
enum class RemoteCommand { Press, Release, Toggle, ShowSettings, ShowFeedback, Quit };

/// The running program as seen from outside. Main thread.
struct RemoteTarget {
    std::function<void(RemoteCommand)> perform;
    std::function<QString()> state;       ///< the case name, "idle"
    std::function<QString()> statusText;  ///< the first line of the menu
    std::function<QString()> version;
};

/// Keeps the program to one instance a session and lets others speak to it. Main thread.
class RemoteControl {
  public:
    enum class Instance {
        Only,     ///< this is the one instance
        Another,  ///< one runs already
    };
    enum class Delivery {
        Done,
        Unavailable,  ///< this session has no way to reach a running instance
        NoInstance,   ///< none runs
        NoAnswer,     ///< the running instance did not answer in time
        Refused,      ///< the running instance, or the way to it, answered with an error
    };

    virtual ~RemoteControl() = default;

    /// Tries to become the one instance.
    virtual Instance registerInstance() = 0;
    /// Answers for the running program from now on. After a successful registration; the target outlives the
    /// control.
    virtual void serve(RemoteTarget target) = 0;
    /// Tells listeners of a change of state, by its case name.
    virtual void announceState(const QString& state) = 0;
    /// Passes a command to the running instance and waits for it to be taken.
    virtual Delivery send(RemoteCommand command) = 0;
    /// After `send` found the instance out of reach (Unavailable): why, in Italian.
    virtual QString whyUnavailable() const = 0;
};

}  // namespace parlivo
