#include "platform/linux/base/LinuxBundleTools.h"

#include "platform/linux/base/InheritedEnvironment.h"
#include "support/ChildProcess.h"

#include <QCoreApplication>
#include <QProcess>

#include <chrono>

namespace parlivo {

namespace {

/// No tool of a healthy system takes that long; the program's end cuts the wait short.
constexpr std::chrono::hours patience{24};

BundleTools::Outcome run(const ChildProcess::Program& program) {
    const auto tool = ChildProcess::launch(program);
    const bool ended = tool->waitForExit(patience);
    return ended && tool->exitStatus() == 0 ? BundleTools::Outcome::Done : BundleTools::Outcome::Failed;
}

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

BundleTools::Outcome LinuxBundleTools::unpack(const QString& archive, const QString& folder) {
    return run({paths_.unzip, {QStringLiteral("-q"), archive, QStringLiteral("-d"), folder}});
}

BundleTools::Outcome LinuxBundleTools::mirror(const QString& source, const QString& destination) {
    return run({paths_.rsync,
                {QStringLiteral("-a"), QStringLiteral("--delete"), source + QLatin1Char('/'),
                 destination + QLatin1Char('/')}});
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
