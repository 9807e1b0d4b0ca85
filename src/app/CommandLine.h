// SPDX-License-Identifier: MIT
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
    enum class Action {
        Start,  ///< no arguments: start, or bring the running instance forward
        ShowHelp,
        ShowVersion,
        Command,  ///< `commands`, for the running instance
    };
    Action action = Action::Start;
    std::vector<RemoteCommand> commands;

    /// Whether the commands make sense for a program that is just starting: opening windows does, key presses
    /// and releases do not.
    bool canStart() const;
};

/// Why a command line is refused; the message is Italian.
struct CommandLineError {
    QString message;
};

/// `arguments` without the program's name. Not QCommandLineParser: its errors are English wherever Qt's own
/// translations are not installed, and its help has one list where this has sections.
std::variant<CommandLine, CommandLineError> parseCommandLine(const QStringList& arguments);

/// The text of --help, Italian.
QString commandLineHelp();

}  // namespace parlivo
