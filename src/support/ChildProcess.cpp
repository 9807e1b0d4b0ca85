// SPDX-License-Identifier: MIT
#include "support/ChildProcess.h"

#include "support/Clock.h"
#include "support/Error.h"
#include "support/LoopJobs.h"

#include <QCoreApplication>
#include <QMutex>
#include <QProcess>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace parlivo {

/// What the handle and the thread know of one child.
struct ChildProcess::Shared {
    QProcess* process = nullptr;    // process thread only
    std::optional<int> exitStatus;  // written before `running` turns false, read after
    std::atomic<bool> running = true;
    Clock::Signal exited;
};

/// What all children have in common.
struct ChildConditions {
    std::function<void()> setup;
    QProcessEnvironment environment{QProcessEnvironment::InheritFromParent};
};

namespace {

QProcessEnvironment environmentOf(const ChildProcess::Program& program, const ChildConditions& conditions) {
    if (program.environment.isEmpty()) return conditions.environment;
    QProcessEnvironment environment = conditions.environment.inheritsFromParent()
                                          ? QProcessEnvironment::systemEnvironment()
                                          : conditions.environment;
    for (auto entry = program.environment.begin(); entry != program.environment.end(); ++entry) {
        environment.insert(entry.key(), entry.value());
    }
    return environment;
}

}  // namespace

/// The thread on which every QProcess lives.
class ChildProcessThread : private LoopJobs {
  public:
    ChildProcessThread() {
        thread_.setObjectName(QStringLiteral("parlivo.processes"));
        moveToThread(&thread_);
        connect(&thread_, &QThread::finished, this, [this] { killRemaining(); });
        thread_.start();
    }
    ~ChildProcessThread() override {
        thread_.quit();
        thread_.wait();
    }
    ChildProcessThread(const ChildProcessThread&) = delete;
    ChildProcessThread& operator=(const ChildProcessThread&) = delete;

    using SharedPtr = std::shared_ptr<ChildProcess::Shared>;

    SharedPtr launch(const ChildProcess::Program& program, const ChildConditions& conditions) {
        SharedPtr child;
        std::optional<Error> failure;
        run([&] {
            try {
                child = launchHere(program, conditions);
            } catch (const Error& error) {
                failure = error;
            }
        });
        if (failure) throw Error(*failure);
        return child;
    }

    void terminate(const SharedPtr& child) {
        post([this, child] { terminateHere(child); });
    }

    std::vector<SharedPtr> children() {
        std::vector<SharedPtr> result;
        run([&] { result = children_; });
        return result;
    }

  private:
    SharedPtr launchHere(const ChildProcess::Program& program, const ChildConditions& conditions) {
        auto process = std::make_unique<QProcess>();
        process->setProgram(program.path);
        process->setArguments(program.arguments);
        process->setWorkingDirectory(program.workingFolder);
        process->setStandardInputFile(QProcess::nullDevice());
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
        if (conditions.setup) process->setChildProcessModifier(conditions.setup);
        process->setProcessEnvironment(environmentOf(program, conditions));
        process->start();
        if (!process->waitForStarted()) {
            throw launchError(*process);
        }
        auto child = std::make_shared<ChildProcess::Shared>();
        child->process = process.release();
        connect(child->process, &QProcess::finished, this,
                [this, child](int code, QProcess::ExitStatus status) { reap(child, code, status); });
        children_.push_back(child);
        return child;
    }

    void terminateHere(const SharedPtr& child) {
        if (!child->process) return;
        child->process->terminate();
        QTimer::singleShot(Clock::scaled(ChildProcess::killDelay), child->process, &QProcess::kill);
    }

    void reap(const SharedPtr& child, int code, QProcess::ExitStatus status) {
        std::exchange(child->process, nullptr)->deleteLater();
        std::erase(children_, child);
        if (status == QProcess::NormalExit) child->exitStatus = code;
        child->running = false;
        child->exited.raise();
    }

    /// The thread ends: a QProcess must not outlive it.
    void killRemaining() {
        const auto remaining = children_;
        for (const auto& child : remaining) {
            child->process->kill();
            child->process->waitForFinished();
        }
    }

    QThread thread_;
    std::vector<SharedPtr> children_;  // process thread only
};

namespace {

struct Registry {
    QMutex mutex;
    std::unique_ptr<ChildProcessThread> thread;  // under mutex
    ChildConditions conditions;                  // under mutex
};

Registry& registry() {
    static Registry instance;
    return instance;
}

ChildProcessThread& processThread() {
    const QMutexLocker lock(&registry().mutex);
    if (!registry().thread) registry().thread = std::make_unique<ChildProcessThread>();
    return *registry().thread;
}

}  // namespace

ChildProcess::ChildProcess(std::shared_ptr<Shared> shared) : shared_(std::move(shared)) {}
ChildProcess::~ChildProcess() = default;

void ChildProcess::setChildSetup(std::function<void()> setup) {
    const QMutexLocker lock(&registry().mutex);
    registry().conditions.setup = std::move(setup);
}

void ChildProcess::setEnvironment(const QProcessEnvironment& environment) {
    const QMutexLocker lock(&registry().mutex);
    registry().conditions.environment = environment;
}

std::shared_ptr<ChildProcess> ChildProcess::launch(const Program& program) {
    ChildConditions conditions;
    {
        const QMutexLocker lock(&registry().mutex);
        conditions = registry().conditions;
    }
    return std::shared_ptr<ChildProcess>(new ChildProcess(processThread().launch(program, conditions)));
}

void ChildProcess::endAll() {
    std::unique_ptr<ChildProcessThread> thread;
    {
        const QMutexLocker lock(&registry().mutex);
        thread = std::move(registry().thread);
    }
    if (!thread) return;
    const auto children = thread->children();
    for (const auto& child : children) thread->terminate(child);
    for (const auto& child : children) child->exited.waitUninterrupted();
}

bool ChildProcess::isRunning() const {
    return shared_->running;
}

std::optional<int> ChildProcess::exitStatus() const {
    if (shared_->running) return std::nullopt;
    return shared_->exitStatus;
}

void ChildProcess::terminate() {
    if (isRunning()) processThread().terminate(shared_);
}

bool ChildProcess::waitForExit(std::chrono::milliseconds limit) {
    return shared_->exited.waitUntil(Clock::Deadline(limit).end());
}

Error launchError(const QProcess& process) {
    const QString reason = QCoreApplication::translate("parlivo::ChildProcess", "impossibile avviare %1");
    return Error(QStringLiteral("Process"), process.error(), reason.arg(process.program()))
        .withDetail(process.errorString());
}

}  // namespace parlivo
