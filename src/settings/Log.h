// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The program's diagnostic log: one UTF-8 text file, one record a call, "[yyyy-MM-dd HH:mm:ss.SSS] message"
/// in local time. Callers never log dictated text unless `debugMode` is on.
namespace parlivo::Log {

/// Appends a record. Returns at once; records keep the order of the calls. Never fails. Any thread.
void info(const QString& message);

/// Path of the file; its folder is created when this is first asked for.
QString path();

/// Waits until every record so far is in the file. For the end of the program and for tests.
void flush();

}  // namespace parlivo::Log
