// SPDX-License-Identifier: MIT
#pragma once

#include "platform/SessionHint.h"

#include <QString>

namespace parlivo {

/// The command that starts a dictation or ends it, as a desktop's own key settings take it: by its name if
/// the search path has this very program, else by its full path. Main thread.
QString toggleCommand();

/// For a session in which programs can take no hot key: how the user gives one to this program in the
/// desktop's own settings. Main thread.
SessionHint ownKeyHint();

}  // namespace parlivo
