// SPDX-License-Identifier: MIT
#include "engines/LocalServer.h"

#include "engines/EngineFiles.h"
#include "engines/JsonExchange.h"
#include "support/Error.h"

#include <QCoreApplication>
#include <QDir>

#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::LocalServer)
};

constexpr std::chrono::milliseconds probeTimeout{1000};
constexpr std::chrono::milliseconds probeLimit{1500};
constexpr std::chrono::minutes longestLoad{5};
/// Not scaled: the step before a request, which comes right after another one's answer, takes what it takes.
constexpr std::chrono::milliseconds freshness{200};

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

bool LocalServer::wasJustSeen() const {
    const std::lock_guard lock(mutex_);
    return started_ && started_->seen && Clock::now() - *started_->seen < freshness &&
           started_->process->isRunning();
}

void LocalServer::noteAlive() {
    const std::lock_guard lock(mutex_);
    if (!started_) return;
    started_->wasAlive = true;
    started_->seen = Clock::now();
}

void LocalServer::forgetSight() {
    const std::lock_guard lock(mutex_);
    if (started_) started_->seen.reset();
}

bool LocalServer::isAlive() {
    if (wasJustSeen()) return true;
    if (!waitForFormer() || !answers()) return false;
    noteAlive();
    return true;
}

bool LocalServer::waitUntilAlive(std::chrono::milliseconds timeout) {
    const Clock::Deadline deadline(timeout);
    const auto awaited = process();
    while (!deadline.passed()) {
        // Before the question: what answers after that is another server.
        const bool ended = awaited && !awaited->isRunning();
        if (isAlive()) return true;
        if (ended || !Clock::sleepFor(traits_.pollInterval)) return false;
    }
    return false;
}

void LocalServer::start(ChildProcess::Program program, const QString& model) {
    checkEngineFiles(program.path);
    // ggml looks for its libraries in the current folder too: it must be one in which nobody else can put
    // any.
    program.workingFolder = QDir::rootPath();
    terminate();
    if (!waitForFormer()) {
        throw Error(QStringLiteral("Process"), 0, Texts::tr("il server precedente non termina"));
    }
    const int terminations = [this] {
        const std::lock_guard lock(mutex_);
        return terminations_;
    }();
    // Not under the lock: a slow disk may hold this up, but nobody who ends the server meanwhile.
    auto process = ChildProcess::launch(program);
    const std::lock_guard lock(mutex_);
    if (terminations_ == terminations) {
        started_ = Started{std::move(process), model, Clock::Deadline(longestLoad)};
    } else {
        process->terminate();
        former_ = std::move(process);
    }
}

std::optional<QJsonObject> LocalServer::ask(const HttpRequest& request) {
    forgetSight();  // the request may be its end
    const HttpReply reply = JsonExchange::send(request);
    if (reply.timedOut) terminate();
    return JsonExchange::object(reply);
}

bool LocalServer::isLoading(const QString& model) const {
    const std::lock_guard lock(mutex_);
    return started_ && started_->model == model && !started_->wasAlive && !started_->loadLimit.passed() &&
           started_->process->isRunning();
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
    ++terminations_;
    if (!started_) return;
    started_->process->terminate();
    former_ = std::move(started_->process);
    started_.reset();
}

std::shared_ptr<ChildProcess> LocalServer::process() const {
    const std::lock_guard lock(mutex_);
    return started_ ? started_->process : nullptr;
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
