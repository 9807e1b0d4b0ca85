// SPDX-License-Identifier: MIT
#include "platform/macos/sound/AfconvertWavConverter.h"

#include "support/ChildProcess.h"
#include "support/Error.h"
#include "support/OwnerOnly.h"

#include <QFile>
#include <QProcess>
#include <QStringDecoder>

namespace parlivo {

namespace {

QStringList argumentsFor(const QString& source, const QString& destination) {
    return {QStringLiteral("-f"),
            QStringLiteral("WAVE"),
            QStringLiteral("-d"),
            QStringLiteral("LEI16@16000"),
            QStringLiteral("-c"),
            QStringLiteral("1"),
            source,
            destination};
}

/// What cannot be read as UTF-8 counts as nothing said.
QString wordsOf(const QByteArray& output) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(output);
    return decoder.hasError() ? QString() : text;
}

}  // namespace

void AfconvertWavConverter::convert(const QString& source, const QString& destination) {
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    process.start(tool_, argumentsFor(source, destination));
    if (!process.waitForStarted()) throw launchError(process);
    process.waitForFinished(-1);
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0) {
        QFile::setPermissions(destination, ownerOnly);
        return;
    }
    QFile::remove(destination);
    throw Error(ErrorCode::ConversionFailed,
                QStringLiteral("afconvert fallito: ") + wordsOf(process.readAllStandardError()));
}

}  // namespace parlivo
