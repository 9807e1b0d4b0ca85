// SPDX-License-Identifier: MIT
#pragma once

#include "Table.h"
#include "desktop/dictation/Program.h"

#include <QProcessEnvironment>

#include <string>

namespace parlivo::bench {

/// Adds a row, `what`: from the start until the item is on the panel, the key is grabbed and the bus answers.
/// Main thread, before anything else starts the program; nobody else may be the panel.
void measureStart(Table& table, const QString& bundle, int rounds,
                  const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
                  const std::string& what = "start to ready: item on the panel, key grabbed, bus answering");

/// Adds rows: what a program takes that does nothing for a while. Takes more than a minute.
void measureIdle(Table& table, const desktop::Program& program);

}  // namespace parlivo::bench
