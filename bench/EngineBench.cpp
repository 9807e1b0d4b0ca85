// SPDX-License-Identifier: MIT

/// Measures what the engines' clients add to the engines' own time, on servers that answer at once. They take
/// the engines' ports, so run it where those are free.

#include "Table.h"
#include "engines/Cleaner.h"
#include "engines/CleanupPrompt.h"
#include "engines/LlamaRunner.h"
#include "engines/Transcriber.h"
#include "models/ModelCatalog.h"
#include "settings/Config.h"
#include "support/ChildProcess.h"
#include "support/FakePlatform.h"
#include "support/Http.h"
#include "support/StubServer.h"
#include "support/Worker.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>

#include <stdexcept>

namespace parlivo::bench {
namespace {

using std::chrono::steady_clock;

constexpr int rounds = 200;

double milliseconds(steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

Samples timesOf(const std::function<void()>& job) {
    job();  // once for what is done once only
    Samples samples(rounds);
    for (int round = 0; round < rounds; ++round) {
        const auto begin = steady_clock::now();
        job();
        samples.add(milliseconds(steady_clock::now() - begin));
    }
    return samples;
}

void measurePrompt(Table& table, FakePlatform& platform) {
    QStringList terms;
    for (int i = 0; i < 1000; ++i) terms.append(QStringLiteral("Termine%1").arg(i));
    platform.userDefaults().setValue(Settings::dictionary.key, terms.join(QLatin1Char('\n')));
    qsizetype length = 0;
    const Samples samples =
        timesOf([&length] { length = Config::builtinPrompt(CleanupLevel::Medium).size(); });
    require(length > 10'000, "the prompt lacks its terms");
    table.row("prompt with 1000 dictionary terms", "ms", samples, 1);
    platform.userDefaults().remove(Settings::dictionary.key);
}

/// A llama-server that has loaded its model; what is started for it serves nothing.
void prepareLlama(FakePlatform& platform, StubServer& server, const QTemporaryDir& folder,
                  const QString& answer) {
    QFile model(folder.filePath(ModelCatalog::cleanupTier(QStringLiteral("light")).fileName));
    require(model.open(QIODevice::WriteOnly) && model.write("{\"idle\":true}") > 0, "no model");
    platform.bundle().resources = {{QStringLiteral("llama-server"), QStringLiteral(PARLIVO_STUB_ENGINE)}};
    platform.userDefaults().setValue(Settings::modelsDir.key, folder.path());
    platform.userDefaults().setValue(Settings::cleanupTier.key, QStringLiteral("light"));
    const QJsonObject message{{QStringLiteral("content"), answer}};
    const QJsonArray choices{QJsonObject{{QStringLiteral("message"), message}}};
    server.on("/health", StubReply::json({}));
    server.on("/v1/chat/completions", StubReply::json({{QStringLiteral("choices"), choices}}));
}

void measureCleaning(Table& table, FakePlatform& platform) {
    const QTemporaryDir folder;
    StubServer server(8766);
    const QString raw = QStringLiteral("parola ").repeated(142) + QStringLiteral("finale");
    require(raw.size() == 1000, "the text has another length");
    const QString answer = raw + QLatin1Char('.');
    prepareLlama(platform, server, folder, answer);
    QString text;
    const Samples samples = timesOf([&] { text = Cleaner::clean(raw); });
    require(text == answer, "the text was not cleaned");
    table.row("cleaning of 1000 characters without the engine's time", "ms", samples, 10);
    LlamaRunner::shutdown();
}

/// From the call until the recogniser has the last byte.
void measureRequest(Table& table, StubServer& server, const QTemporaryDir& folder, int seconds,
                    double target) {
    QFile wav(folder.filePath(QStringLiteral("recording.wav")));
    const QByteArray samples(44 + 32'000 * seconds, '\0');
    require(wav.open(QIODevice::WriteOnly) && wav.write(samples) == samples.size(), "no recording");
    wav.close();
    steady_clock::time_point arrived;
    server.on("/inference", [&arrived](const StubServer::Request& request) {
        arrived = request.arrived;
        return StubReply::json({{QStringLiteral("text"), QStringLiteral("Ciao")}});
    });
    Samples leaving(rounds);
    Samples returning(rounds);
    for (int round = 0; round < rounds; ++round) {
        const auto begin = steady_clock::now();
        require(Transcriber::transcribe(wav.fileName()) == QStringLiteral("Ciao"), "no transcription");
        returning.add(milliseconds(steady_clock::now() - arrived));
        leaving.add(milliseconds(arrived - begin));
    }
    const std::string recording = "recording of " + std::to_string(seconds) + " s: ";
    table.row(recording + "WAV there to request arrived", "ms", leaving, target);
    table.row(recording + "request arrived to text there", "ms", returning, std::nullopt);
}

void measureRequests(Table& table) {
    const QTemporaryDir folder;
    StubServer server(8765, {{"/", [](const StubServer::Request&) { return StubReply::json({}); }}});
    measureRequest(table, server, folder, 5, 40);
    measureRequest(table, server, folder, 60, 120);
}

void measureExchange(Table& table) {
    StubServer server(0, {{"/", [](const StubServer::Request&) { return StubReply::json({}); }}});
    HttpRequest request;
    request.url = QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(server.port()));
    const auto exchange = [&request] { require(Http::exchange(request).complete(), "no reply"); };
    table.row("the floor of all that ask: one request on the loopback address", "ms", timesOf(exchange),
              std::nullopt);
}

int run() {
    FakePlatform& platform = FakePlatform::install();
    Table table("The engines' clients");
    measurePrompt(table, platform);
    measureExchange(table);
    measureRequests(table);
    measureCleaning(table, platform);
    ChildProcess::endAll();
    Worker::endAll();
    return table.status();
}

}  // namespace
}  // namespace parlivo::bench

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    try {
        return parlivo::bench::run();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "engine_bench: %s\n", failure.what());
        return 2;
    }
}
