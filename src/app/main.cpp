#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "platform/Adapters.h"
#include "settings/Config.h"
#include "settings/Log.h"
#include "support/ChildProcess.h"
#include "support/HttpSession.h"
#include "support/MainQueue.h"
#include "ui/views/AppIcon.h"
#include "ui/views/Language.h"

#include <QApplication>

#include <cstdio>
#include <memory>
#include <optional>

namespace parlivo {
namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::main)
};

void print(std::FILE* stream, const QString& text) {
    std::fputs(text.toUtf8().constData(), stream);
    std::fputc('\n', stream);
}

int complain(const QString& message) {
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
    return Texts::tr("controllo non disponibile: questa sessione non ha un bus D-Bus");
}

/// Passes the commands of a second start to the running instance.
int forward(const std::vector<RemoteCommand>& commands) {
    for (const RemoteCommand command : commands) {
        const auto delivery = Platform::current().remoteControl().send(command);
        if (delivery != RemoteControl::Delivery::Done) return complain(refusal(delivery));
    }
    return 0;
}

RemoteTarget targetOf(AppDelegate& delegate) {
    return {
        .perform = [&delegate](RemoteCommand command) { delegate.perform(command); },
        .state = [&delegate] { return caseName(delegate.state()); },
        .statusText = [&delegate] { return delegate.statusLine(); },
        .version = [] { return Config::appVersion(); },
    };
}

/// The one instance, from start to end.
int runApplication(const CommandLine& line) {
    AppDelegate delegate;
    Platform& platform = Platform::current();
    platform.onTerminationRequest([] { QCoreApplication::quit(); });
    // Inside the event loop: the notes of a new version wait for the user, who may want to quit instead, or
    // whose other programs may call meanwhile.
    MainQueue::async([&] {
        platform.remoteControl().serve(targetOf(delegate));
        delegate.applicationDidFinishLaunching();
        for (const RemoteCommand command : line.commands) delegate.perform(command);
    });
    const int result = QCoreApplication::exec();
    delegate.applicationWillTerminate();
    return result;
}

/// Only one instance starts; any other passes its wish on and ends.
int claimAndRun(const CommandLine& line, const std::optional<QString>& problem) {
    if (Platform::current().remoteControl().claim() == RemoteControl::Claim::Another) {
        return forward(line.commands.empty() ? std::vector{RemoteCommand::ShowSettings} : line.commands);
    }
    if (!line.canStart()) return complain(Texts::tr("non è in esecuzione"));
    if (problem) return complain(*problem);
    const int result = runApplication(line);
    HttpSession::end();
    ChildProcess::endAll();
    Log::flush();
    return result;
}

/// With a screen the full application; a mere messenger needs none and starts faster without.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withScreen) {
    QCoreApplication::setApplicationName(QStringLiteral("Parlivo"));
    if (!withScreen) return std::make_unique<QCoreApplication>(argc, argv);
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setDesktopFileName(QStringLiteral("it.parlivo.Parlivo"));
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(appIcon());
    speakItalian();
    return application;
}

int run(int& argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i) arguments.append(QString::fromLocal8Bit(argv[i]));
    const auto parsed = parseCommandLine(arguments);
    if (const auto* fault = std::get_if<CommandLineFault>(&parsed)) return complain(fault->message);
    const auto& line = std::get<CommandLine>(parsed);
    Platform::install(makePlatform());
    ChildProcess::setChildSetup(Platform::current().childSetup());
    ChildProcess::setEnvironment(Platform::current().childEnvironment());
    switch (line.wish) {
        case CommandLine::Wish::ShowHelp:
            print(stdout, commandLineHelp());
            return 0;
        case CommandLine::Wish::ShowVersion:
            print(stdout, QStringLiteral("Parlivo ") + Config::appVersion());
            return 0;
        case CommandLine::Wish::Start:
        case CommandLine::Wish::Command:
            break;
    }
    const auto problem = line.canStart() ? Platform::current().startProblem() : std::nullopt;
    const auto application = makeApplication(argc, argv, line.canStart() && !problem);
    const int result = claimAndRun(line, problem);
    Platform::install(nullptr);
    return result;
}

}  // namespace
}  // namespace parlivo

int main(int argc, char** argv) {
    return parlivo::run(argc, argv);
}
