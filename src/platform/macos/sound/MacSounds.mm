// SPDX-License-Identifier: MIT
#include "platform/macos/sound/MacSounds.h"

#include "platform/macos/base/Strings.h"

#include <AppKit/AppKit.h>

namespace parlivo {

void MacSounds::play(const QString& name) {
    [[NSSound soundNamed:toNSString(name)] play];
}

}  // namespace parlivo
