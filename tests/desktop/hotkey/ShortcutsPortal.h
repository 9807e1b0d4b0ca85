// SPDX-License-Identifier: MIT
#pragma once

#include "support/LoopJobs.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QThread>

#include <memory>
#include <mutex>

namespace parlivo::desktop {

/// A desktop's portal with hot keys, on a thread of its own, as it is a program of its own.
class ShortcutsPortal {
  public:
    enum class Answer {
        Bound,
        BoundButFailed,  ///< as GNOME 48: the code says that it failed, the key is bound all the same
        Dismissed,       ///< by the user
    };
    struct Behaviour {
        Answer answer = Answer::Bound;
        bool knowsProgram = true;  ///< by its desktop file
        unsigned version = 1;      ///< 0: has no hot keys
        bool hangs = false;        ///< answers nothing until `wakeUp`
        int failures = 0;          ///< of the first questions, before it answers so
    };

    explicit ShortcutsPortal(Behaviour behaviour);
    ~ShortcutsPortal();
    ShortcutsPortal(const ShortcutsPortal&) = delete;
    ShortcutsPortal& operator=(const ShortcutsPortal&) = delete;

    /// Tells the bound program of an edge.
    void tell(const char* signal);
    /// Answers what was asked while it hung, and all else from now on.
    void wakeUp();
    /// Whether it was asked something that it has not answered.
    bool isAsked();
    /// Ends the program's session.
    void closeSession();

    QString program();  ///< that has registered
    QString trigger();  ///< that was asked for last
    int questions();    ///< that the user was asked

  private:
    class Object;

    LoopJobs jobs_;
    QThread thread_;
    std::unique_ptr<Object> object_;  // on the thread
};

}  // namespace parlivo::desktop
