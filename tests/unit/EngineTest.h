// SPDX-License-Identifier: MIT
#pragma once

#include "models/ModelCatalog.h"
#include "settings/Config.h"
#include "support/PlatformTest.h"
#include "support/StubServer.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

namespace parlivo {

inline constexpr quint16 whisperPort = 8765;
inline constexpr quint16 llamaPort = 8766;
inline constexpr quint16 ollamaPort = 11434;

/// A server that accepts connections and never says a word.
inline StubReply silence() {
    return StubReply::of(StubReply::Manner::Never);
}

/// Bytes that no JSON reader should take for a reply, each with a name for the test's output. `validBody` is
/// a reply whose text is "Ciao".
inline std::vector<std::pair<const char*, StubReply>> brokenReplies(const QByteArray& validBody) {
    using Manner = StubReply::Manner;
    const qsizetype text = validBody.indexOf("Ciao");
    if (text < 0) throw std::invalid_argument("a reply without the text");
    return {
        {"an HTML page", StubReply::body("<html><body>Benvenuto</body></html>", 200, "text/html")},
        {"plain text", StubReply::body("Invalid request", 400, "text/plain")},
        {"nothing", StubReply::body({})},
        {"truncated JSON", StubReply::body(validBody.chopped(1))},
        {"two objects", StubReply::body(validBody + validBody)},
        {"an array", StubReply::body("[" + validBody + "]")},
        {"a string", StubReply::body("\"ciao\"")},
        {"invalid UTF-8", StubReply::body(QByteArray(validBody).insert(text, "\xff\xfe"))},
        {"a lone surrogate", StubReply::body(QByteArray(validBody).replace("Ciao", "\\ud83d"))},
        {"a body cut off", StubReply::cutOff(validBody.first(text), validBody.size())},
        {"a whole object in a body cut off", StubReply::cutOff(validBody, validBody.size() + 1)},
        {"a closed connection", StubReply::of(Manner::CloseAtOnce)},
        {"a broken connection", StubReply::of(Manner::ResetAtOnce)},
        {"another protocol", {"SSH-2.0-Server\r\n", Manner::ThenClose, {}}},
        {"a redirection",
         {"HTTP/1.1 307 Moved\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n",
          Manner::Whole,
          {}}},
        {"a body without end", {"HTTP/1.1 200 OK\r\n\r\n{\"text\":\"", Manner::WithoutBound, {}}},
        {"a body of 100 MB",
         {"HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n{\"text\":\"", Manner::WithoutBound, {}}},
    };
}

/// A test of what the engines' clients do. Runs where the engines' ports are free.
class EngineTest : public PlatformTest {
  protected:
    static QByteArray golden(const QString& name) {
        QFile file(QStringLiteral(PARLIVO_GOLDEN "/") + name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
        return file.readAll();
    }

    /// Stated times pass fifty times as fast: 30 s become 0.6 s.
    static void hurry() { Clock::setScale(0.02); }

    static bool eventually(const std::function<bool()>& condition) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > limit) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    /// How long `job` took, as stated time. Qt's timers take the liberty of firing 5 % early.
    static std::chrono::milliseconds statedTimeOf(const std::function<void()>& job, double scale = 0.02) {
        const auto start = std::chrono::steady_clock::now();
        job();
        const std::chrono::duration<double, std::milli> real = std::chrono::steady_clock::now() - start;
        return std::chrono::milliseconds(static_cast<qint64>(real.count() / scale));
    }

    QString writeFile(const QString& name, const QByteArray& contents) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return file.fileName();
    }

    /// Puts the stand-in in the place of whisper-server; `behaviour` tells it what to do.
    void installWhisper(const QJsonObject& behaviour) {
        platform.bundle().resources[QStringLiteral("whisper-server")] = stubEngine();
        platform.bundle().resources[QStringLiteral("ggml-model.bin")] =
            writeFile(QStringLiteral("ggml-model.bin"), QJsonDocument(behaviour).toJson());
    }
    /// Puts it in the place of llama-server, and chooses a tier as its model.
    void installLlama(const QJsonObject& behaviour, const QString& tier = QStringLiteral("light")) {
        platform.bundle().resources[QStringLiteral("llama-server")] = stubEngine();
        writeFile(llamaModelName(tier), QJsonDocument(behaviour).toJson());
        store(Settings::modelsDir, folder.path());
        store(Settings::cleanupTier, tier);
    }
    static QString llamaModelName(const QString& tier) { return ModelCatalog::cleanupTier(tier).fileName; }
    static QString stubEngine() { return QStringLiteral(PARLIVO_STUB_ENGINE); }

    QTemporaryDir folder;
};

}  // namespace parlivo
