// SPDX-License-Identifier: MIT
#include "platform/macos/base/OsLog.h"

#include <os/log.h>

namespace parlivo {

void OsLog::write(const QString& message) {
    // The system keeps the log of this name for the life of the process.
    static os_log_t log = os_log_create("it.parlivo.Parlivo", "program");
    os_log_with_type(log, OS_LOG_TYPE_ERROR, "%{public}s", message.toUtf8().constData());
}

}  // namespace parlivo
