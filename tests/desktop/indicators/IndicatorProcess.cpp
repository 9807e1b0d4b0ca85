// SPDX-License-Identifier: MIT
#include "desktop/indicators/IndicatorProcess.h"

#include "support/Error.h"

namespace parlivo::desktop {

IndicatorProcess::IndicatorProcess(const QProcessEnvironment& environment) {
    QObject::connect(&process_, &QProcess::readyReadStandardOutput, [this] { read(); });
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.setProcessEnvironment(environment);
    process_.start(QStringLiteral(PARLIVO_INDICATORS), QStringList());
    if (!waitForWord(QStringLiteral("ready"))) throw Error(QStringLiteral("Test"), 1, process_.errorString());
    said_.clear();
}

IndicatorProcess::~IndicatorProcess() {
    process_.closeWriteChannel();
    if (!waitFor([this] { return process_.state() == QProcess::NotRunning; }, std::chrono::seconds(5)))
        process_.kill();
    process_.waitForFinished();
}

void IndicatorProcess::read() {
    while (process_.canReadLine()) {
        const QString line = QString::fromUtf8(process_.readLine()).trimmed();
        const bool event = line == QStringLiteral("opening") || line == QStringLiteral("ready") ||
                           line.startsWith(QStringLiteral("chosen"));
        if (event)
            said_.append(line);
        else
            answers_.append(line);
    }
}

QStringList IndicatorProcess::perform(const QString& line) {
    answers_.clear();
    process_.write(line.toUtf8() + '\n');
    const auto done = QStringLiteral("done");
    const bool answered = waitFor([&] { return answers_.contains(done) || !isRunning(); });
    if (!answered || !answers_.contains(done))
        throw Error(QStringLiteral("Test"), 2, QStringLiteral("no answer to: ") + line);
    answers_.removeLast();
    return answers_;
}

bool IndicatorProcess::waitForWord(const QString& word) {
    return waitFor([&] { return said_.contains(word); });
}

}  // namespace parlivo::desktop
