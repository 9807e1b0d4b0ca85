// SPDX-License-Identifier: MIT
#include "app/CommandLine.h"
#include "support/FakePlatform.h"

#include <gtest/gtest.h>

namespace parlivo {
namespace {

std::variant<CommandLine, CommandLineError> parse(const char* arguments) {
    return parseCommandLine(QString::fromLatin1(arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

CommandLine parsed(const char* arguments) {
    return std::get<CommandLine>(parse(arguments));
}

TEST(CommandLineTest, NoArgumentsStart) {
    EXPECT_EQ(parsed("").action, CommandLine::Action::Start);
    EXPECT_TRUE(parsed("").canStart());
}

TEST(CommandLineTest, CommandsKeepTheirOrder) {
    const CommandLine line = parsed("--press --release --toggle --settings --feedback --quit");
    EXPECT_EQ(line.commands,
              (std::vector{RemoteCommand::Press, RemoteCommand::Release, RemoteCommand::Toggle,
                           RemoteCommand::ShowSettings, RemoteCommand::ShowFeedback, RemoteCommand::Quit}));
    EXPECT_FALSE(line.canStart());
}

TEST(CommandLineTest, WindowsCanBeAskedOfAProgramThatOnlyStarts) {
    EXPECT_TRUE(parsed("--settings").canStart());
    EXPECT_TRUE(parsed("--feedback --settings").canStart());
    EXPECT_FALSE(parsed("--settings --press").canStart());
    EXPECT_FALSE(parsed("--quit").canStart());
}

TEST(CommandLineTest, HelpAndVersionWinOverCommands) {
    EXPECT_EQ(parsed("--press --help").action, CommandLine::Action::ShowHelp);
    EXPECT_EQ(parsed("--version --quit").action, CommandLine::Action::ShowVersion);
    EXPECT_EQ(parsed("--press -h").action, CommandLine::Action::ShowHelp);
    EXPECT_EQ(parsed("-v --quit").action, CommandLine::Action::ShowVersion);
}

TEST(CommandLineTest, AnUnknownOptionIsNamed) {
    for (const char* wrong : {"--pres", "press", "--press=1", "-x", "-V", "-vv", "--settings boh"}) {
        const auto result = parse(wrong);
        ASSERT_TRUE(std::holds_alternative<CommandLineError>(result)) << wrong;
        const QString option = QString::fromLatin1(wrong).section(QLatin1Char(' '), -1);
        EXPECT_EQ(std::get<CommandLineError>(result).message,
                  QStringLiteral("opzione sconosciuta: %1 (vedi --help)").arg(option));
    }
}

TEST(CommandLineTest, TheHelpExplainsEveryOption) {
    FakePlatform::install();
    const QString help = commandLineHelp();
    FakePlatform::uninstall();
    EXPECT_TRUE(help.startsWith(QStringLiteral("Uso: Parlivo [opzioni]\n\nTieni premuto ")))
        << help.toStdString();
    EXPECT_TRUE(help.endsWith(
        QStringLiteral(", parla, rilascia: il testo appare dove stai scrivendo.\n"
                       "Senza opzioni avvia Parlivo; se è già in esecuzione ne apre le impostazioni.\n\n"
                       "Per l'istanza in esecuzione:\n"
                       "  --press      come premere la scorciatoia\n"
                       "  --release    come rilasciarla\n"
                       "  --toggle     inizia a registrare, oppure ferma e scrive\n"
                       "  --settings   apre le impostazioni\n"
                       "  --feedback   apre la finestra del feedback\n"
                       "  --quit       chiude Parlivo\n\n"
                       "  --version    mostra la versione (anche -v)\n"
                       "  --help       mostra questo testo (anche -h)\n")))
        << help.toStdString();
}

}  // namespace
}  // namespace parlivo
