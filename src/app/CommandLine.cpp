// SPDX-License-Identifier: MIT
#include "app/CommandLine.h"

#include "input/HotKeySentence.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::CommandLine)
};

struct Option {
    const char16_t* name;
    RemoteCommand command;
    const char* meaning;
};

constexpr std::array options{
    Option{u"--press", RemoteCommand::Press,
           QT_TRANSLATE_NOOP("parlivo::CommandLine", "come premere la scorciatoia")},
    Option{u"--release", RemoteCommand::Release,
           QT_TRANSLATE_NOOP("parlivo::CommandLine", "come rilasciarla")},
    Option{u"--toggle", RemoteCommand::Toggle,
           QT_TRANSLATE_NOOP("parlivo::CommandLine", "inizia a registrare, oppure ferma e scrive")},
    Option{u"--settings", RemoteCommand::ShowSettings,
           QT_TRANSLATE_NOOP("parlivo::CommandLine", "apre le impostazioni")},
    Option{u"--feedback", RemoteCommand::ShowFeedback,
           QT_TRANSLATE_NOOP("parlivo::CommandLine", "apre la finestra del feedback")},
    Option{u"--quit", RemoteCommand::Quit, QT_TRANSLATE_NOOP("parlivo::CommandLine", "chiude Parlivo")},
};

QString line(const QString& name, const QString& meaning) {
    return QStringLiteral("  %1 %2\n").arg(name, -12).arg(meaning);
}

}  // namespace

bool CommandLine::canStart() const {
    return action == Action::Start ||
           (action == Action::Command && std::all_of(commands.begin(), commands.end(), [](RemoteCommand c) {
                return c == RemoteCommand::ShowSettings || c == RemoteCommand::ShowFeedback;
            }));
}

std::variant<CommandLine, CommandLineError> parseCommandLine(const QStringList& arguments) {
    CommandLine result;
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            return CommandLine{CommandLine::Action::ShowHelp, {}};
        }
        if (argument == QLatin1String("--version") || argument == QLatin1String("-v")) {
            return CommandLine{CommandLine::Action::ShowVersion, {}};
        }
        const auto* found = std::find_if(options.begin(), options.end(), [&](const Option& option) {
            return argument == QStringView(option.name);
        });
        if (found == options.end()) {
            return CommandLineError{Texts::tr("opzione sconosciuta: %1 (vedi --help)").arg(argument)};
        }
        result.action = CommandLine::Action::Command;
        result.commands.push_back(found->command);
    }
    return result;
}

QString commandLineHelp() {
    QString text = Texts::tr("Uso: Parlivo [opzioni]\n\n");
    text += hotKeySentence(
        {.held = Texts::tr("Tieni premuto ⌥Spazio, parla, rilascia: il testo appare dove stai scrivendo.\n"),
         .pressed = Texts::tr("Premi %1, parla, ripremi: il testo appare dove stai scrivendo.\n"),
         .none = Texts::tr(
             "Questa sessione non ha tasti globali: nelle impostazioni del desktop assegna un tasto al comando parlivo --toggle.\n")});
    text += Texts::tr("Senza opzioni avvia Parlivo; se è già in esecuzione ne apre le impostazioni.\n\n");
    text += Texts::tr("Per l'istanza in esecuzione:\n");
    for (const Option& option : options) {
        text += line(QStringView(option.name).toString(), Texts::tr(option.meaning));
    }
    text += QLatin1Char('\n');
    text += line(QStringLiteral("--version"), Texts::tr("mostra la versione (anche -v)"));
    text += line(QStringLiteral("--help"), Texts::tr("mostra questo testo (anche -h)"));
    return text;
}

}  // namespace parlivo
