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
        EXPECT_TRUE(
            std::get<CommandLineError>(result).message.startsWith(QStringLiteral("opzione sconosciuta: ")));
    }
}

TEST(CommandLineTest, TheHelpNamesEveryOption) {
    FakePlatform::install();
    for (const char* option :
         {"--press", "--release", "--toggle", "--settings", "--feedback", "--quit", "--version", "--help"}) {
        EXPECT_TRUE(commandLineHelp().contains(QString::fromLatin1(option))) << option;
    }
    FakePlatform::uninstall();
}

}  // namespace
}  // namespace parlivo
