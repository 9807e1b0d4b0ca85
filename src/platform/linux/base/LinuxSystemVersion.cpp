// SPDX-License-Identifier: MIT
#include "platform/linux/base/LinuxSystemVersion.h"

#include <QSysInfo>

namespace parlivo {

QString LinuxSystemVersion::description() {
    return QStringLiteral("Version %1 (Build %2)")
        .arg(QSysInfo::prettyProductName(), QSysInfo::kernelVersion());
}

}  // namespace parlivo
