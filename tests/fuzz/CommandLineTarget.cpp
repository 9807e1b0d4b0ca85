// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "app/CommandLine.h"

namespace parlivo::fuzz {

/// Arguments, each ended by a NUL, as the system hands them over.
void attack(const QByteArray& input) {
    QStringList arguments;
    for (const QByteArray& argument : input.split('\0')) arguments.append(QString::fromLocal8Bit(argument));
    arguments.removeLast();
    const auto parsed = parseCommandLine(arguments);
    if (const auto* error = std::get_if<CommandLineError>(&parsed)) {
        expect(!error->message.isEmpty(), "a error is said");
        return;
    }
    const auto& line = std::get<CommandLine>(parsed);
    const bool isCommand = line.action == CommandLine::Action::Command;
    expect(isCommand != line.commands.empty(), "commands are what commands have");
    expect(!isCommand || line.commands.size() == static_cast<std::size_t>(arguments.size()),
           "no word is passed over");
    expect((line.action == CommandLine::Action::Start) == arguments.isEmpty(),
           "it starts where nothing is asked");
}

}  // namespace parlivo::fuzz
