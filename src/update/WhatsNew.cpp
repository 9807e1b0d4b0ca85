#include "update/WhatsNew.h"

#include "settings/Config.h"
#include "ui/views/Dialogs.h"

namespace parlivo {

using namespace Qt::StringLiterals;

void WhatsNew::showIfPending() {
    const QString current = Config::appVersion();
    const auto changelog = Config::string(Config::Key::pendingChangelog);
    const QString lastSeen = Config::string(Config::Key::lastSeenVersion, {});
    // A changelog that is not due stays stored: a first start has nothing to compare with.
    if (changelog && !lastSeen.isEmpty() && lastSeen != current) {
        // First, so that a notice that was cut off does not come back.
        Config::remove(Config::Key::pendingChangelog);
        Dialogs::current().ask({.message = u"Parlivo %1 — Cosa c'è di nuovo"_s.arg(current),
                                .informativeText = *changelog,
                                .buttons = {u"Ottimo"_s}});
    }
    Config::set(Config::Key::lastSeenVersion, current);
}

}  // namespace parlivo
