// SPDX-License-Identifier: MIT
#pragma once

#include "EngineTest.h"
#include "engines/LlamaRunner.h"
#include "engines/Transcriber.h"
#include "support/ChildProcess.h"
#include "support/Error.h"

#include <QFile>
#include <QJsonObject>

#include <sys/types.h>

#include <csignal>
#include <vector>

namespace parlivo {

/// Engines that are started, fail and end: the stand-in program in their place.
class EngineProcessTest : public EngineTest {
  protected:
    struct Start {
        qint64 process = 0;
        int othersRunning = 0;
        QStringList arguments;
    };

    ~EngineProcessTest() override {
        Transcriber::stopServer();
        LlamaRunner::shutdown();
        ChildProcess::endAll();
    }

    /// The starts of the engine that loads this model.
    std::vector<Start> starts(const QString& model = QStringLiteral("ggml-model.bin")) const {
        QFile file(folder.filePath(model + QStringLiteral(".starts")));
        if (!file.open(QIODevice::ReadOnly)) return {};
        std::vector<Start> result;
        const QStringList lines =
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString& line : lines) {
            QStringList words = line.split(QLatin1Char('\t'));
            const qint64 process = words.takeFirst().toLongLong();
            const int others = words.takeFirst().toInt();
            result.push_back({process, others, words});
        }
        return result;
    }

    QString transcription() {
        try {
            return Transcriber::transcribe(wav);
        } catch (const Error& error) {
            message = error.localizedDescription();
            return QStringLiteral("error %1").arg(error.code());
        }
    }

    static QJsonObject answering(const QString& text) { return {{QStringLiteral("text"), text}}; }

    static void send(qint64 process, int signal) { ASSERT_EQ(kill(static_cast<pid_t>(process), signal), 0); }

    QString message;  ///< of the last error
    const QString wav = writeFile(QStringLiteral("recording.wav"), "RIFF");
    const QString lightModel = llamaModelName(QStringLiteral("light"));
    const QString fullModel = llamaModelName(QStringLiteral("full"));
};

}  // namespace parlivo
