#include "update/WhatsNew.h"

#include "settings/Config.h"
#include "ui/views/Dialogs.h"

namespace parlivo {

using namespace Qt::StringLiterals;

void WhatsNew::showIfPending() {
    const QString current = Config::appVersion();
    const auto changelog = Config::get(Settings::pendingChangelog);
    const QString lastSeen = Config::get(Settings::lastSeenVersion);
    // A changelog that is not due stays stored: a first start has nothing to compare with.
    if (changelog && !lastSeen.isEmpty() && lastSeen != current) {
        // First, so that a notice that was cut off does not come back.
        Config::remove(Settings::pendingChangelog);
        Dialogs::current().ask({.message = u"Parlivo %1 — Cosa c'è di nuovo"_s.arg(current),
                                .informativeText = *changelog,
                                .buttons = {u"Ottimo"_s}});
    }
    Config::set(Settings::lastSeenVersion, current);
}

}  // namespace parlivo
