// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "input/HotKeyStatus.h"
#include "input/Injector.h"
#include "platform/Adapters.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/ChildProcess.h"
#include "support/MainQueue.h"
#include "support/Worker.h"
#include "ui/views/AppIcon.h"
#include "ui/views/ScrollAreas.h"
#include "ui/views/Signs.h"
#include "ui/views/Translation.h"

#include <QApplication>

#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

namespace parlivo {
namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::main)
};

void print(std::FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
    std::fputc('\n', stream);
}

int fail(const QString& message) {
    print(stderr, QStringLiteral("Parlivo: ") + message);
    return 1;
}

/// Why a command did not arrive.
QString refusal(RemoteControl::Delivery delivery) {
    switch (delivery) {
        case RemoteControl::Delivery::NoInstance:
            return Texts::tr("non è in esecuzione");
        case RemoteControl::Delivery::NoAnswer:
            return Texts::tr("l'istanza in esecuzione non risponde");
        case RemoteControl::Delivery::Refused:
            return Texts::tr("l'istanza in esecuzione ha rifiutato il comando");
        case RemoteControl::Delivery::Unavailable:
        case RemoteControl::Delivery::Done:
            break;
    }
    const QString reason = Platform::current().remoteControl().whyUnavailable();
    return Texts::tr("controllo non disponibile: %1").arg(reason);
}

/// Passes commands to the running instance, up to the first that does not arrive.
RemoteControl::Delivery sendToRunningInstance(const std::vector<RemoteCommand>& commands) {
    auto delivery = RemoteControl::Delivery::Done;
    for (const RemoteCommand command : commands) {
        delivery = Platform::current().remoteControl().send(command);
        if (delivery != RemoteControl::Delivery::Done) break;
    }
    return delivery;
}

/// The exit status of a second start, which sends its commands to the first instance. Nullopt if the first
/// one ended before it answered and its place is this program's now.
std::optional<int> yieldToRunningInstance(const CommandLine& line) {
    const auto delivery = sendToRunningInstance(
        line.commands.empty() ? std::vector{RemoteCommand::ShowSettings} : line.commands);
    if (delivery == RemoteControl::Delivery::Done) return 0;
    const bool mayHaveEnded =
        delivery == RemoteControl::Delivery::NoInstance || delivery == RemoteControl::Delivery::NoAnswer;
    if (mayHaveEnded && line.canStart() &&
        Platform::current().remoteControl().registerInstance() == RemoteControl::Instance::Only) {
        return std::nullopt;
    }
    return fail(refusal(delivery));
}

RemoteTarget targetOf(AppDelegate& delegate) {
    return {
        .perform = [&delegate](RemoteCommand command) { delegate.perform(command); },
        .state = [&delegate] { return caseName(delegate.state()); },
        .statusText = [&delegate] { return delegate.statusLine(); },
        .version = [] { return Config::appVersion(); },
    };
}

/// Tells the log which ways this session has: at the start, and when the desktop's answer changes them.
class SessionLog {
  public:
    void note() {
        const QString summary = Platform::current().desktopSummary();
        if (summary != std::exchange(last_, summary)) Log::info(QStringLiteral("sessione: ") + summary);
    }

  private:
    QString last_;
};

/// Runs the only instance from start to end.
int runApplication(const CommandLine& line) {
    SessionLog session;
    AppDelegate delegate;
    Platform& platform = Platform::current();
    session.note();
    QObject::connect(&HotKeyStatus::shared(), &HotKeyStatus::changed, &delegate,
                     [&session] { session.note(); });
    platform.onTerminationRequest([] { QCoreApplication::quit(); });
    platform.onDisplayLoss([] {
        Log::info(QStringLiteral("il server grafico è terminato: l'app si chiude"));
        Log::flush();
    });
    // Runs inside the event loop, because the what's-new notice waits for the user, and the program must
    // react to quit requests and to the bus meanwhile.
    MainQueue::async([&] {
        platform.remoteControl().serve(targetOf(delegate));
        delegate.applicationDidFinishLaunching();
        for (const RemoteCommand command : line.commands) delegate.perform(command);
    });
    const int result = QCoreApplication::exec();
    delegate.applicationWillTerminate();
    return result;
}

/// Only one instance runs; a second one sends its commands to the first and ends.
int runOnlyInstance(const CommandLine& line, const std::optional<QString>& problem) {
    if (Platform::current().remoteControl().registerInstance() == RemoteControl::Instance::Another) {
        if (const auto status = yieldToRunningInstance(line)) return *status;
    }
    if (!line.canStart()) return fail(Texts::tr("non è in esecuzione"));
    if (problem) return fail(*problem);
    const int result = runApplication(line);
    Injector::finishRestore();
    Worker::endAll();
    ChildProcess::endAll();
    Log::flush();
    return result;
}

/// A QApplication if windows may be shown; a second start that only sends commands needs none and starts
/// faster without.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withScreen) {
    QCoreApplication::setApplicationName(QStringLiteral("Parlivo"));
    if (!withScreen) return std::make_unique<QCoreApplication>(argc, argv);
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setDesktopFileName(QStringLiteral("it.parlivo.Parlivo"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(appIcon());
    installTranslation();
    installSigns();
    makeScrollAreasSafe();
    return application;
}

std::optional<QString> whyNotToStart() {
    if (auto problem = Config::addressProblem()) return problem;
    return Platform::current().startProblem();
}

int showHelp(int& argc, char** argv) {
    // The catalogues of texts belong to an application object.
    const QCoreApplication application(argc, argv);
    installTranslation();
    print(stdout, commandLineHelp());
    return 0;
}

int run(int& argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
    const auto parsed = parseCommandLine(arguments);
    if (const auto* error = std::get_if<CommandLineError>(&parsed)) return fail(error->message);
    const auto& line = std::get<CommandLine>(parsed);
    Platform::install(makePlatform());
    ChildProcess::setChildSetup(Platform::current().childSetup());
    ChildProcess::setEnvironment(Platform::current().childEnvironment());
    switch (line.action) {
        case CommandLine::Action::ShowHelp:
            return showHelp(argc, argv);
        case CommandLine::Action::ShowVersion:
            print(stdout, QStringLiteral("Parlivo ") + Config::appVersion());
            return 0;
        case CommandLine::Action::Start:
        case CommandLine::Action::Command:
            break;
    }
    const auto problem = line.canStart() ? whyNotToStart() : std::nullopt;
    const auto application = makeApplication(argc, argv, line.canStart() && !problem);
    const int result = runOnlyInstance(line, problem);
    Platform::install(nullptr);
    return result;
}

}  // namespace
}  // namespace parlivo

int main(int argc, char** argv) {
    return parlivo::run(argc, argv);
}
