// SPDX-License-Identifier: MIT

// The calls of the system below the frameworks: its log.
#include "platform/macos/fakes/Calls.h"

#include <os/log.h>

#include <cstdarg>

using namespace parlivo;

struct os_log_s {};

os_log_t os_log_create(const char* subsystem, const char* category) {
    mac::record(QStringLiteral("log %1 %2").arg(QString::fromUtf8(subsystem), QString::fromUtf8(category)));
    return mac::keep(os_log_s());
}

void os_log_with_type(os_log_t /*log*/, os_log_type_t type, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const QString message = QString::fromUtf8(va_arg(arguments, const char*));
    va_end(arguments);
    mac::record(QStringLiteral("log type %1 %2 «%3»").arg(type).arg(QString::fromUtf8(format), message));
}
