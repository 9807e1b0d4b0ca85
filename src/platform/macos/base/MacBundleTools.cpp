// SPDX-License-Identifier: MIT
#include "platform/macos/base/MacBundleTools.h"

#include "platform/macos/base/MacBundle.h"
#include "support/ChildProcess.h"
#include "support/Error.h"

#include <QDirIterator>
#include <QProcess>

namespace parlivo {

namespace {

/// Whether the tool ended well. Throws if it cannot be started.
bool run(const QString& tool, const QStringList& arguments) {
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(tool, arguments);
    if (!process.waitForStarted()) throw launchError(process);
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

qint64 sizeOf(const QString& folder) {
    qint64 size = 0;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        if (!entries.fileInfo().isSymLink()) size += entries.fileInfo().size();
    }
    return size;
}

/// One word to the shell, whatever is in it.
QString quoted(QString word) {
    return QLatin1Char('\'') + word.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}

}  // namespace

std::optional<QString> MacBundleTools::stagingPlace(const QString& /*bundle*/) const {
    return std::nullopt;
}

BundleTools::Outcome MacBundleTools::unpack(const QString& archive, const QString& folder,
                                            qint64 maximumSize) {
    const bool unpacked = run(paths_.ditto, {QStringLiteral("-xk"), archive, folder});
    return unpacked && sizeOf(folder) <= maximumSize ? Outcome::Done : Outcome::Failed;
}

std::optional<QString> MacBundleTools::shortVersion(const QString& bundle) const {
    return shortVersionOf(bundle);
}

/// The slashes have the contents copied rather than the folder.
BundleTools::Replacement MacBundleTools::replace(const QString& source, const QString& destination) {
    const bool copied = run(paths_.rsync, {QStringLiteral("-a"), QStringLiteral("--delete"),
                                           source + QLatin1Char('/'), destination + QLatin1Char('/')});
    return copied ? Replacement::Done : Replacement::Failed;
}

/// The second lets this program end first: `open` would only bring a running one to the front.
void MacBundleTools::startAfterEnd(const QString& bundle) {
    QProcess shell;
    shell.setProgram(paths_.shell);
    shell.setArguments({QStringLiteral("-c"),
                        QStringLiteral("sleep 1; ") + paths_.open + QLatin1Char(' ') + quoted(bundle)});
    shell.setStandardInputFile(QProcess::nullDevice());
    shell.setStandardOutputFile(QProcess::nullDevice());
    shell.setStandardErrorFile(QProcess::nullDevice());
    shell.startDetached();
}

}  // namespace parlivo
