// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace parlivo::desktop::gnome {

/// A program of the test's desktop, such as the shell or the portal, that a test takes away and brings back.
/// It is known by the name under which tests/support/desktop has started it. What was brought back ends with
/// this object.
class SessionService {
  public:
    /// Whether the desktop has been started with it.
    static bool exists(const QString& name);

    /// Throws Error if it does not run.
    explicit SessionService(const QString& name);
    ~SessionService();
    SessionService(const SessionService&) = delete;
    SessionService& operator=(const SessionService&) = delete;

    /// Ends it at once, as a crash would, and waits until it is gone. Throws Error if it does not go.
    void kill();
    /// Starts another one with the same arguments and environment. Throws Error if that fails.
    void restart();

  private:
    pid_t process_ = 0;
    QStringList command_;
    QProcess next_;
};

}  // namespace parlivo::desktop::gnome
