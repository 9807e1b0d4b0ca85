// SPDX-License-Identifier: MIT
#include "dictation/EngineRelay.h"

#include "support/Http.h"
#include "support/Waiting.h"

#include <algorithm>
#include <iterator>

namespace parlivo::bench {

namespace {

using namespace std::chrono_literals;

constexpr auto engineLimit = 10min;

}  // namespace

EngineRelay::EngineRelay(const Setup& setup)
    : url_(QStringLiteral("http://127.0.0.1:%1").arg(setup.port + 10)), relay_(setup.port) {
    engine_.setStandardOutputFile(QProcess::nullDevice());
    engine_.setStandardErrorFile(QProcess::nullDevice());
    engine_.start(setup.program,
                  setup.arguments + QStringList{QStringLiteral("--host"), QStringLiteral("127.0.0.1"),
                                                QStringLiteral("--port"), QString::number(setup.port + 10)});
    HttpRequest probe;
    probe.url = QUrl(url_ + QString::fromLatin1(setup.probe));
    const auto answers = [&] { return Http::exchange(probe).status == 200; };
    require(desktop::waitFor(answers, engineLimit), "an engine does not come up");
    relay_.on(setup.probe, StubReply::json({}));
    relay_.on(setup.path, [this](const StubServer::Request& request) { return pass(request); });
}

EngineRelay::~EngineRelay() {
    engine_.kill();
    engine_.waitForFinished();
}

std::vector<EngineRelay::Exchange> EngineRelay::since(SteadyClock::time_point begin) const {
    const std::lock_guard lock(mutex_);
    std::vector<Exchange> found;
    std::copy_if(exchanges_.begin(), exchanges_.end(), std::back_inserter(found),
                 [&](const Exchange& exchange) { return exchange.arrived >= begin; });
    return found;
}

StubReply EngineRelay::pass(const StubServer::Request& request) {
    HttpRequest passedOn;
    passedOn.url = QUrl(url_ + QString::fromLatin1(request.path));
    passedOn.method = request.method;
    passedOn.headers = {{"Content-Type", request.header("Content-Type")}};
    passedOn.body = request.body;
    passedOn.timeout = engineLimit;
    const HttpReply reply = Http::exchange(passedOn);
    const std::lock_guard lock(mutex_);
    exchanges_.push_back({request.arrived, SteadyClock::now()});
    return StubReply::body(reply.body, reply.status == 0 ? 502 : reply.status);
}

}  // namespace parlivo::bench
