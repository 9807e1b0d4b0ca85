// SPDX-License-Identifier: MIT
#include "platform/linux/desktop/OwnKeyHint.h"

#include "platform/linux/desktop/CurrentDesktop.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStandardPaths>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::OwnKeyHint)
};

const QString toggleOption = QStringLiteral(" --toggle");

/// As a shell reads it, and the settings of desktops.
QString quoted(const QString& path) {
    return path.contains(QLatin1Char(' ')) ? QLatin1Char('"') + path + QLatin1Char('"') : path;
}

}  // namespace

QString toggleCommand() {
    const QString name = QStringLiteral("parlivo");
    const QString own = QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath();
    const QString found = QFileInfo(QStandardPaths::findExecutable(name)).canonicalFilePath();
    return (found == own ? name : quoted(own)) + toggleOption;
}

SessionHint ownKeyHint() {
    SessionHint hint{
        .topic = SessionHint::Topic::HotKey, .text = {}, .lines = {}, .actionLabel = {}, .action = {}};
    if (currentDesktopIs("labwc")) {
        hint.text = Texts::tr(
            "labwc non lascia che i programmi prendano un tasto. Scrivi queste righe nella sezione keyboard di ~/.config/labwc/rc.xml, poi esegui labwc --reconfigure: Alt+Spazio inizia la dettatura, e ripremuto la ferma e scrive.");
        hint.lines = QStringLiteral(
                         "<keybind key=\"A-space\">\n  <action name=\"Execute\" command=\"%1\"/>\n</keybind>")
                         .arg(toggleCommand().toHtmlEscaped());
    } else {
        hint.text = Texts::tr(
            "Questa sessione non lascia che i programmi prendano un tasto. Nelle impostazioni del desktop assegna un tasto a questo comando: premuto inizia la dettatura, ripremuto la ferma e scrive.");
        hint.lines = toggleCommand();
    }
    return hint;
}

}  // namespace parlivo
