#pragma once

#include "platform/RemoteControl.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>
#include <vector>

namespace parlivo {

/// What the user asked for on the command line.
struct CommandLine {
    enum class Wish {
        Start,  ///< no arguments: start, or bring the running instance forward
        ShowHelp,
        ShowVersion,
        Command,  ///< `commands`, for the running instance
    };
    Wish wish = Wish::Start;
    std::vector<RemoteCommand> commands;

    /// Whether the commands make sense for a program that is only just starting: windows do, key edges do
    /// not.
    bool canStart() const;
};

/// What is wrong with a command line, in Italian.
struct CommandLineFault {
    QString message;
};

/// `arguments` without the program's name.
std::variant<CommandLine, CommandLineFault> parseCommandLine(const QStringList& arguments);

/// The text of --help, Italian.
QString commandLineHelp();

}  // namespace parlivo
