// SPDX-License-Identifier: MIT
#include "platform/linux/base/Syslog.h"

#include <syslog.h>

namespace parlivo {

Syslog::Syslog() {
    openlog("Parlivo", LOG_PID, LOG_USER);
}

Syslog::~Syslog() {
    closelog();
}

void Syslog::write(const QString& message) {
    syslog(LOG_WARNING, "%s", message.toUtf8().constData());
}

}  // namespace parlivo
