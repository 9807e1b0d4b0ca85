// SPDX-License-Identifier: MIT
#include "platform/macos/base/MacSystemVersion.h"

#include "platform/macos/base/Strings.h"

namespace parlivo {

QString MacSystemVersion::description() {
    return fromNSString(NSProcessInfo.processInfo.operatingSystemVersionString);
}

}  // namespace parlivo
