// SPDX-License-Identifier: MIT
#include "update/WhatsNew.h"

#include "settings/Config.h"
#include "ui/views/Dialogs.h"

#include <QCoreApplication>

namespace parlivo {

using namespace Qt::StringLiterals;

void WhatsNew::showIfPending() {
    const QString current = Config::appVersion();
    const auto changelog = Config::get(Settings::pendingChangelog);
    const QString lastSeen = Config::get(Settings::lastSeenVersion);
    // A changelog that is not due stays stored: a first start has nothing to compare with.
    if (changelog && !lastSeen.isEmpty() && lastSeen != current) {
        // Removed first, so that the notice is shown only once even if the program is killed meanwhile.
        Config::remove(Settings::pendingChangelog);
        Dialogs::current().ask(
            {.message = QCoreApplication::translate("parlivo::WhatsNew", "Parlivo %1 — Cosa c'è di nuovo")
                            .arg(current),
             .informativeText = *changelog,
             .buttons = {QCoreApplication::translate("parlivo::WhatsNew", "Ottimo")}});
    }
    Config::set(Settings::lastSeenVersion, current);
}

}  // namespace parlivo
