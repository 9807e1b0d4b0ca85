#pragma once

namespace parlivo {

/// Makes Qt's own words, in file dialogs and context menus, Italian like the program's, whatever the desktop
/// speaks. Once, with the application object there. Main thread.
void speakItalian();

}  // namespace parlivo
