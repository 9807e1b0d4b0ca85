#include "engines/LocalServer.h"

#include "support/Clock.h"
#include "support/Error.h"
#include "support/Http.h"

#include <QCoreApplication>

#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::LocalServer)
};

constexpr std::chrono::milliseconds probeTimeout{1000};
constexpr std::chrono::milliseconds probeLimit{1500};

}  // namespace

bool LocalServer::answers() const {
    HttpRequest probe;
    probe.url = traits_.probe;
    probe.timeout = probeTimeout;
    probe.limit = probeLimit;
    probe.redirects = HttpRequest::Redirects::Refuse;
    const HttpReply reply = Http::exchange(probe);
    return reply.complete() && (traits_.accepts == Accepts::AnyStatus || reply.status == 200);
}

bool LocalServer::isAlive() {
    return waitForFormer() && answers();
}

bool LocalServer::waitUntilAlive(std::chrono::milliseconds timeout) {
    const Clock::Deadline deadline(timeout);
    while (!deadline.passed()) {
        if (isAlive()) return true;
        if (!Clock::sleepFor(traits_.pollInterval)) return false;
    }
    return false;
}

void LocalServer::start(const ChildProcess::Program& program, const QString& model) {
    terminate();
    if (!waitForFormer()) {
        throw Error(QStringLiteral("Process"), 0, Texts::tr("il server precedente non termina"));
    }
    const std::lock_guard lock(mutex_);
    started_ = Started{ChildProcess::launch(program), model};
}

bool LocalServer::isStarted() const {
    const std::lock_guard lock(mutex_);
    return started_.has_value();
}

std::optional<QString> LocalServer::loadedModel() const {
    const std::lock_guard lock(mutex_);
    if (!started_) return std::nullopt;
    return started_->model;
}

void LocalServer::terminate() {
    const std::lock_guard lock(mutex_);
    if (!started_) return;
    started_->process->terminate();
    former_ = std::move(started_->process);
    started_.reset();
}

/// True when nothing of ours is on its way out any more.
bool LocalServer::waitForFormer() {
    std::shared_ptr<ChildProcess> former;
    {
        const std::lock_guard lock(mutex_);
        former = former_;
    }
    return !former || !former->isRunning() || former->waitForExit(2 * ChildProcess::killDelay);
}

}  // namespace parlivo
