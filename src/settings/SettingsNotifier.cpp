// SPDX-License-Identifier: MIT
#include "settings/SettingsNotifier.h"

namespace parlivo {

SettingsNotifier& SettingsNotifier::shared() {
    static SettingsNotifier instance;
    return instance;
}

}  // namespace parlivo
