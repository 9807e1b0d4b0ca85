// SPDX-License-Identifier: MIT
#pragma once

namespace parlivo {

/// Installs the Italian translation of Qt's own texts (file dialogs, context menus), whatever the desktop's
/// language is. To be called once, when the application object exists. Main thread.
void installTranslation();

}  // namespace parlivo
