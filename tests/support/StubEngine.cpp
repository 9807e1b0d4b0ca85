// SPDX-License-Identifier: MIT

// A program in the place of whisper-server and llama-server. It takes their arguments; the file it is given
// as its model is a JSON object that says how it behaves:
//   "idle"         serve nothing, wait for the end
//   "exitAtStart"  exit at once with this status
//   "killedAtStart" be ended at once by a signal, as a crash would
//   "loading"      milliseconds until it serves; before, port 8765 refuses and port 8766 answers 503
//   "text"         what it answers to a request; read afresh for each
//   "onRequest"    "answer" (the default), "never", "hangUp" or "die"; read afresh for each
//   "lingering"    milliseconds that it goes on serving when asked to end
//   "deaf"         it takes no notice of being asked
//   "withGraphics" another such object, which holds where it is given a file for graphics processors
// It writes a line to the file MODEL.starts for each start: its process id, the number of earlier ones that
// still ran then, and its arguments, separated by tabs; and a dot to MODEL.probes for each GET of "/".

#include "support/StubServer.h"

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <map>
#include <optional>
#include <thread>

namespace {

using namespace parlivo;
using std::chrono::milliseconds;

QByteArray argumentAfter(const QByteArrayList& arguments, const char* option) {
    return arguments.value(arguments.indexOf(option) + 1);
}

QJsonObject readBehaviour(const QString& model) {
    QFile file(model);
    if (!file.open(QIODevice::ReadOnly)) _exit(1);
    const QJsonObject behaviour = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonValue withGraphics = behaviour.value(QLatin1String("withGraphics"));
    const bool given = qEnvironmentVariableIsSet("GGML_BACKEND_PATH");
    return given && withGraphics.isObject() ? withGraphics.toObject() : behaviour;
}

int countRunning(const QByteArray& starts) {
    int running = 0;
    for (const QByteArray& line : starts.split('\n')) {
        const pid_t process = line.left(line.indexOf('\t')).toInt();
        if (process > 0 && kill(process, 0) == 0) ++running;
    }
    return running;
}

void recordStart(const QString& model, const QByteArrayList& arguments) {
    QFile file(model + QStringLiteral(".starts"));
    if (!file.open(QIODevice::ReadWrite | QIODevice::Append)) _exit(1);
    file.seek(0);
    const QByteArray former = QByteArray::number(countRunning(file.readAll()));
    file.write(QByteArray::number(getpid()) + '\t' + former + '\t' + arguments.join('\t') + '\n');
}

void recordProbe(const QString& model) {
    QFile file(model + QStringLiteral(".probes"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || !file.putChar('.')) _exit(1);
}

QJsonObject chatReply(const QJsonValue& text) {
    const QJsonObject message{{QStringLiteral("role"), QStringLiteral("assistant")},
                              {QStringLiteral("content"), text}};
    return {{QStringLiteral("choices"), QJsonArray{QJsonObject{{QStringLiteral("message"), message}}}}};
}

StubReply replyTo(const QString& model, const QJsonObject& answer) {
    if (!QFile(model + QStringLiteral(".asked")).open(QIODevice::WriteOnly)) _exit(1);
    const QString onRequest = readBehaviour(model).value(QLatin1String("onRequest")).toString();
    if (onRequest == QLatin1String("die")) _exit(1);
    if (onRequest == QLatin1String("never")) return StubReply::of(StubReply::Manner::Never);
    if (onRequest == QLatin1String("hangUp")) return StubReply::of(StubReply::Manner::CloseAtOnce);
    return StubReply::json(answer);
}

milliseconds duration(const QJsonObject& behaviour, QLatin1String key) {
    return milliseconds(behaviour.value(key).toInt());
}

std::map<QByteArray, StubServer::Script> paths(const QString& model,
                                               std::chrono::steady_clock::time_point ready) {
    using Request = StubServer::Request;
    const auto text = [model] { return readBehaviour(model).value(QLatin1String("text")); };
    return {
        {"/",
         [=](const Request&) {
             recordProbe(model);
             return StubReply::body("<html></html>", 200, "text/html");
         }},
        {"/inference",
         [=](const Request&) {
             return replyTo(model, {{QStringLiteral("text"), text()}});
         }},
        {"/health",
         [=](const Request&) {
             const bool loaded = std::chrono::steady_clock::now() >= ready;
             return StubReply::json({}, loaded ? 200 : 503);
         }},
        {"/v1/chat/completions", [=](const Request&) { return replyTo(model, chatReply(text())); }},
    };
}

}  // namespace

int main(int argc, char** argv) {
    // Before the server has threads, so that all of them leave the signal to this one.
    sigset_t termination;
    sigemptyset(&termination);
    sigaddset(&termination, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &termination, nullptr);

    const QByteArrayList arguments(argv + 1, argv + argc);
    const QString model = QString::fromUtf8(argumentAfter(arguments, "-m"));
    recordStart(model, arguments);
    const QJsonObject behaviour = readBehaviour(model);
    const QJsonValue exitStatus = behaviour.value(QLatin1String("exitAtStart"));
    if (exitStatus.isDouble()) return exitStatus.toInt();
    // No core file is left behind by this one.
    if (behaviour.value(QLatin1String("killedAtStart")).toBool()) kill(getpid(), SIGKILL);

    const auto port = static_cast<quint16>(argumentAfter(arguments, "--port").toUInt());
    const milliseconds loading = duration(behaviour, QLatin1String("loading"));
    const auto ready = std::chrono::steady_clock::now() + loading;
    if (port == 8765) std::this_thread::sleep_for(loading);
    std::optional<StubServer> server;
    if (!behaviour.value(QLatin1String("idle")).toBool()) server.emplace(port, paths(model, ready));

    int signal = 0;
    do {
        sigwait(&termination, &signal);
    } while (behaviour.value(QLatin1String("deaf")).toBool());
    std::this_thread::sleep_for(duration(behaviour, QLatin1String("lingering")));
    return 0;
}
