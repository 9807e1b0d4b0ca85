// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/linux/sound/SndfileWavConverter.h"
#include "support/Error.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace parlivo::fuzz {

namespace {

constexpr qsizetype wavHead = 44;

void checkWav(const QByteArray& wav) {
    expect(wav.size() >= wavHead && wav.startsWith("RIFF") && wav.mid(8, 8) == "WAVEfmt ",
           "the result is a WAV");
    expect(qFromLittleEndian<quint32>(wav.constData() + 24) == 16'000, "its rate is the recogniser's");
    expect(qFromLittleEndian<quint16>(wav.constData() + 22) == 1, "it has one channel");
    expect(qFromLittleEndian<quint32>(wav.constData() + 40) == wav.size() - wavHead,
           "its length is the stated one");
}

}  // namespace

void attack(const QByteArray& input) {
    const QString source = scratchPath(QStringLiteral("capture.caf"));
    const QString result = scratchPath(QStringLiteral("capture.wav"));
    writeFile(source, input);
    QFile::remove(result);
    try {
        SndfileWavConverter().convert(source, result);
        checkWav(readFile(result));
        const auto others = QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther;
        expect(!(QFileInfo(result).permissions() & others), "it is the user's alone");
    } catch (const Error& error) {
        expect(error.domain() == Error::programDomain() &&
                   error.code() == static_cast<int>(ErrorCode::ConversionFailed),
               "a failure is a failed conversion");
        expect(error.localizedDescription().startsWith(QStringLiteral("afconvert fallito: ")), "it says so");
        expect(!QFile::exists(result), "it leaves no result");
    }
}

}  // namespace parlivo::fuzz
