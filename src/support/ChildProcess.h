// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QProcess;

namespace parlivo {

class Error;

/// A program started by this one. It reads nothing, its output goes to the null device, and it has no
/// terminal.
///
/// All children are started, watched and reaped on one thread that lives as long as the program: some systems
/// tie a child's life to the thread that started it. The operations may be called from any other thread.
/// Letting go of the handle does not stop the child; the program's end does.
class ChildProcess {
  public:
    struct Program {
        QString path;
        QStringList arguments;
        QString workingFolder{};  ///< this program's own if empty
        /// What the child's environment has besides that of every child, or in its place.
        QMap<QString, QString> environment{};
    };

    /// Starts a program. Throws Error (domain "Process") with the system's reason when it cannot be started.
    static std::shared_ptr<ChildProcess> launch(const Program& program);

    /// Done by every child between fork and exec, so only async-signal-safe calls; installed once, before the
    /// first launch. The platform uses it to make children die with this program.
    static void setChildSetup(std::function<void()> setup);

    /// The environment of every child; installed once, before the first launch. Without it children get this
    /// program's own.
    static void setEnvironment(const QProcessEnvironment& environment);

    /// Stops every child that still runs, waits until they are gone and ends the thread. Main thread, at the
    /// end.
    static void endAll();

    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool isRunning() const;
    /// The exit status once the program has exited by itself; nullopt while it runs or if a signal ended
    /// it.
    std::optional<int> exitStatus() const;

    /// Asks the child to end (SIGTERM) and returns at once; 3 s later it is killed if it is still there.
    void terminate();
    /// Waits until the child is gone, `limit` at most. False when it is still there or the program's end came
    /// first.
    bool waitForExit(std::chrono::milliseconds limit);

    /// Between the request to end and the kill. Like every limit here a stated time, which Clock scales.
    static constexpr std::chrono::milliseconds killDelay{3000};

  private:
    struct Shared;
    friend class ChildProcessThread;
    explicit ChildProcess(std::shared_ptr<Shared> shared);
    std::shared_ptr<Shared> shared_;
};

/// The error of a program that QProcess could not start: domain "Process", with Qt's words as the detail.
Error launchError(const QProcess& process);

}  // namespace parlivo
