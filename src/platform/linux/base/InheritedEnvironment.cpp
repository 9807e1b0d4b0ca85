// SPDX-License-Identifier: MIT
#include "platform/linux/base/InheritedEnvironment.h"

namespace parlivo {

const QProcessEnvironment& inheritedEnvironment() {
    static const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    return environment;
}

void setOwnVariable(const char* name, const QByteArray& value) {
    inheritedEnvironment();  // recorded before the first change
    qputenv(name, value);
}

}  // namespace parlivo
