// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <optional>
#include <vector>

namespace parlivo::desktop {

/// The result of a short call of the program.
struct Outcome {
    int status = -1;
    QString output;
    QString errors;
};

/// The bundle under test.
QString builtBundle();

/// A bundle with the built program and resources, but engines of the test's choice: at first none.
class BundleCopy {
  public:
    BundleCopy();
    QString path() const { return folder_.filePath(QStringLiteral("Parlivo.app")); }
    /// Makes `program` the bundle's engine of this name, in place of what was there.
    void putEngine(const QString& name, const QString& program) const;
    /// The same with a file of this content and these permissions.
    void putEngine(const QString& name, const QByteArray& content, QFile::Permissions permissions) const;
    /// Leaves a resource, or a folder of them, out.
    void removeResource(const QString& name) const;

  private:
    QString resource(const QString& name) const;
    QTemporaryDir folder_;
};

/// A running Parlivo, observed and controlled from outside: as a process and on the session bus.
class Program : public QObject {
    Q_OBJECT

  public:
    explicit Program(const QString& bundle = builtBundle(),
                     const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                     const QStringList& wrapper = {});
    /// Kills it, if it still runs.
    ~Program() override;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Runs a second program with arguments to its end.
    static Outcome call(const QStringList& arguments, const QString& bundle = builtBundle(),
                        const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment());

    /// Waits until it answers on the bus: the key is grabbed by then.
    bool waitUntilUp() const;
    /// Waits until something answers on an engine's port with the status 200.
    static bool waitUntilServed(const QString& url);

    /// Properties on the bus; empty when it does not answer.
    QString state() const { return property("State"); }
    QString statusText() const { return property("StatusText"); }
    QString version() const { return property("Version"); }
    /// Calls a method on the bus. False when that fails.
    bool invoke(const char* method) const;

    bool waitForState(const QString& wanted) const;
    /// Every state that the signal told, oldest first.
    const QStringList& states() const { return states_; }
    void forgetStates() { states_.clear(); }

    bool isRunning() const { return process_.state() == QProcess::Running; }
    pid_t processId() const { return static_cast<pid_t>(process_.processId()); }
    void signal(int number) const;
    /// Waits for its end. nullopt if it goes on, or if a signal ended it.
    std::optional<int> waitForExit();
    QString errors();

  private Q_SLOTS:
    void take(const QString& state) { states_.append(state); }

  private:
    QString property(const char* name) const;

    QProcess process_;
    QStringList states_;
};

/// A TCP socket that waits for connections (/proc/net/tcp and tcp6, proc(5)).
struct Listener {
    QString address;  ///< in hexadecimal digits, as the system tells it
    quint16 port = 0;
};
/// All of them in this world.
std::vector<Listener> listeners();

/// The ids of the running processes whose executable file has this name.
std::vector<pid_t> processesNamed(const QString& name);

}  // namespace parlivo::desktop
