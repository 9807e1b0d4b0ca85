// SPDX-License-Identifier: MIT
#include "platform/macos/session/MacLoginItem.h"

#include "platform/macos/base/Errors.h"

#include <ServiceManagement/ServiceManagement.h>

namespace parlivo {

bool MacLoginItem::isEnabled() {
    return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

void MacLoginItem::setEnabled(bool enabled) {
    SMAppService* const service = SMAppService.mainAppService;
    NSError* error = nil;
    const BOOL done =
        enabled ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error];
    if (!done) throw fromNSError(error);
}

}  // namespace parlivo
