// SPDX-License-Identifier: MIT
#include "engines/LocalServer.h"

#include "engines/EngineFiles.h"
#include "engines/JsonExchange.h"
#include "settings/Log.h"
#include "support/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::LocalServer)
};

constexpr std::chrono::milliseconds probeTimeout{1000};
constexpr std::chrono::milliseconds probeLimit{1500};
constexpr std::chrono::minutes longestLoad{5};
/// From the moment at which a crashing server's connections break.
constexpr std::chrono::seconds longestCrash{3};
/// Not scaled: the step before a request, which comes right after another one's answer, takes what it takes.
constexpr std::chrono::milliseconds freshness{200};

/// As by a server that crashes.
bool isCutOff(const HttpReply& reply) {
    return !reply.complete() && !reply.timedOut;
}

/// What is left of a stated time that began at `start`; 0 if nothing is.
std::chrono::milliseconds remaining(std::chrono::milliseconds stated, Clock::TimePoint start) {
    const std::chrono::duration<double> passed = Clock::now() - start;
    const std::chrono::duration<double> whole = Clock::scaled(stated);
    if (passed >= whole) return {};
    return std::chrono::duration_cast<std::chrono::milliseconds>(stated * (1 - passed / whole));
}

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

/// The server that is to answer, if it is ours.
std::shared_ptr<ChildProcess> LocalServer::noteRequest() {
    const std::lock_guard lock(mutex_);
    if (!started_) return nullptr;
    started_->seen.reset();  // the request may be its end
    started_->hasReplied = false;
    return started_->process;
}

void LocalServer::noteReply() {
    const std::lock_guard lock(mutex_);
    if (started_) started_->hasReplied = true;
}

bool LocalServer::isAlive() {
    if (wasJustSeen()) return true;
    if (!waitForFormer() || !answers()) return false;
    noteAlive();
    return true;
}

bool LocalServer::waitUntilAlive(std::chrono::milliseconds timeout) {
    const Clock::Deadline deadline(timeout);
    auto awaited = process();
    while (!deadline.passed()) {
        // Before the question: what answers after that is another server.
        const bool ended = awaited && !awaited->isRunning();
        if (isAlive()) return true;
        if (ended && !startWithoutGraphics(awaited)) return false;
        if (ended) awaited = process();
        if (!Clock::sleepFor(traits_.pollInterval)) return false;
    }
    return false;
}

void LocalServer::start(ChildProcess::Program program, const QString& model) {
    checkEngineFiles(program.path);
    // ggml looks for its libraries in the current folder too: it must be one in which nobody else can put
    // any.
    program.workingFolder = QDir::rootPath();
    {
        const std::lock_guard lock(mutex_);
        judgeGraphics();
        forgetStarted();
    }
    if (!waitForFormer()) {
        throw Error(QStringLiteral("Process"), 0, Texts::tr("il server precedente non termina"));
    }
    const int terminations = [this] {
        const std::lock_guard lock(mutex_);
        return terminations_;
    }();
    launch(std::move(program), model, terminations);
}

/// Lets the program use graphics, or not, in its environment.
LocalServer::Graphics LocalServer::graphicsFor(ChildProcess::Program& program) const {
    const auto file = graphicsFile(program.path);
    program.environment.clear();
    if (!file) return Graphics::None;
    const std::lock_guard lock(mutex_);
    if (brokenGraphics_ == program.path) return Graphics::Withheld;
    program.environment = withGraphics(*file);
    return Graphics::Allowed;
}

/// Starts the program, and ends it at once if somebody has ended the server since it had that many
/// terminations.
void LocalServer::launch(ChildProcess::Program program, const QString& model, int terminations) {
    const Graphics graphics = graphicsFor(program);
    // Not under the lock: a slow disk may hold this up, but nobody who ends the server meanwhile.
    auto process = ChildProcess::launch(program);
    const std::lock_guard lock(mutex_);
    if (terminations_ == terminations) {
        started_ =
            Started{std::move(process), std::move(program), graphics, model, Clock::Deadline(longestLoad)};
    } else {
        process->terminate();
        former_ = std::move(process);
    }
}

/// Blames the graphics, or clears them, if the server has failed. Under mutex_.
void LocalServer::judgeGraphics() {
    if (!started_ || started_->hasReplied || started_->graphics == Graphics::None) return;
    const bool tooSlow = !started_->wasAlive && started_->loadLimit.passed();
    if (started_->process->isRunning() && !tooSlow) return;
    if (started_->graphics == Graphics::Withheld) {
        brokenGraphics_.reset();
        return;
    }
    brokenGraphics_ = started_->program.path;
    Log::info(QStringLiteral("%1 non funziona con il processore grafico: riparte senza")
                  .arg(QFileInfo(started_->program.path).fileName()));
}

/// Starts the server again that has ended by itself. False if graphics had no part in its end.
bool LocalServer::startWithoutGraphics(const std::shared_ptr<ChildProcess>& ended) {
    std::optional<Started> failed;
    int terminations = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!started_ || started_->process != ended) return false;
        if (started_->graphics != Graphics::Allowed) return false;
        judgeGraphics();
        if (!brokenGraphics_) return false;
        failed = started_;
        forgetStarted();
        terminations = terminations_;
    }
    try {
        launch(std::move(failed->program), failed->model, terminations);
    } catch (const Error& error) {
        Log::info(error.localizedDescription());
        return false;
    }
    return true;
}

bool LocalServer::mayUseGraphics(const std::shared_ptr<ChildProcess>& process) const {
    const std::lock_guard lock(mutex_);
    return started_ && started_->process == process && started_->graphics == Graphics::Allowed;
}

/// The reply of a server without graphics; nullopt if graphics had no part in what happened to the request,
/// or no such server comes up in the time that is left.
std::optional<HttpReply> LocalServer::askWithoutGraphics(HttpRequest request, Clock::TimePoint sent,
                                                         const std::shared_ptr<ChildProcess>& asked) {
    if (!asked || !mayUseGraphics(asked) || !asked->waitForExit(longestCrash) || Clock::interrupted()) {
        return std::nullopt;
    }
    if (!startWithoutGraphics(asked)) return std::nullopt;
    const auto limit = request.limit.value_or(request.timeout);
    if (!waitUntilAlive(remaining(limit, sent))) return std::nullopt;
    request.limit = remaining(limit, sent);
    const auto askedNow = noteRequest();
    HttpReply reply = JsonExchange::send(std::move(request));
    // The next start judges what was to blame, and must not find a server that is still on its way out.
    if (isCutOff(reply) && askedNow) askedNow->waitForExit(longestCrash);
    return reply;
}

std::optional<QJsonObject> LocalServer::ask(HttpRequest request) {
    const auto sent = Clock::now();
    const auto asked = noteRequest();
    HttpReply reply = JsonExchange::send(request);
    if (isCutOff(reply)) {
        if (auto other = askWithoutGraphics(std::move(request), sent, asked)) reply = std::move(*other);
    }
    if (reply.timedOut) terminate();
    if (reply.complete()) noteReply();
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
    forgetStarted();
}

/// Under mutex_.
void LocalServer::forgetStarted() {
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
