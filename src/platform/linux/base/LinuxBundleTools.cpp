// SPDX-License-Identifier: MIT
#include "platform/linux/base/LinuxBundleTools.h"

#include "platform/linux/base/BundleReplacement.h"
#include "platform/linux/base/InheritedEnvironment.h"
#include "platform/linux/base/LinuxBundle.h"
#include "platform/linux/base/ZipExtraction.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <unistd.h>

namespace parlivo {

namespace {

/// One word to the shell, whatever is in it.
QString quoted(QString word) {
    return QLatin1Char('\'') + word.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}

/// The second is for the usual end; engines that do not let go take some more. A program that came too early
/// would find this one, hand its wishes over to it, and go.
QString startScript(const QString& executable) {
    return QStringLiteral(
               "sleep 1; n=0; "
               "while [ $n -lt 100 ] && kill -0 %1 2>/dev/null; do sleep 0.1; n=$((n+1)); done; "
               "exec ")
               .arg(QCoreApplication::applicationPid()) +
           quoted(executable);
}

}  // namespace

std::optional<QString> LinuxBundleTools::stagingPlace(const QString& bundle) const {
    QString parent = QFileInfo(bundle).path();
    if (::access(QFile::encodeName(parent).constData(), W_OK | X_OK) != 0) return std::nullopt;
    return parent;
}

BundleTools::Outcome LinuxBundleTools::unpack(const QString& archive, const QString& folder,
                                              qint64 maximumSize) {
    return extractZip(archive, folder, maximumSize) ? Outcome::Done : Outcome::Failed;
}

std::optional<QString> LinuxBundleTools::shortVersion(const QString& bundle) const {
    return LinuxBundle(bundle).shortVersion();
}

BundleTools::Replacement LinuxBundleTools::replace(const QString& source, const QString& destination) {
    if (exchangeFolders(source, destination)) return Replacement::Done;
    return copyOver(paths_.rsync, source, destination);
}

void LinuxBundleTools::startAfterEnd(const QString& bundle) {
    QProcess shell;
    shell.setProgram(paths_.shell);
    shell.setArguments(
        {QStringLiteral("-c"), startScript(bundle + QStringLiteral("/Contents/MacOS/Parlivo"))});
    shell.setProcessEnvironment(inheritedEnvironment());
    shell.setStandardInputFile(QProcess::nullDevice());
    shell.setStandardOutputFile(QProcess::nullDevice());
    shell.setStandardErrorFile(QProcess::nullDevice());
    shell.startDetached();
}

}  // namespace parlivo
