// SPDX-License-Identifier: MIT
#include "platform/linux/kde/KeyGrant.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>

namespace parlivo::kde {

namespace {

/// What makes Plasma 6, or 5, read the desktop files anew.
const QStringList readers{QStringLiteral("kbuildsycoca6"), QStringLiteral("kbuildsycoca5")};

}  // namespace

QString KeyGrant::file() const {
    return folder_ + QStringLiteral("/it.parlivo.Parlivo.keys.desktop");
}

/// KWin compares the path as it stands there, without the rules of quoting.
QByteArray KeyGrant::content() const {
    return "[Desktop Entry]\nType=Application\nName=Parlivo\nNoDisplay=true\nExec=" +
           QFile::encodeName(program_) + "\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input\n";
}

bool KeyGrant::isWritten() const {
    QFile present(file());
    return present.open(QIODevice::ReadOnly) && present.readAll() == content();
}

void KeyGrant::write() const {
    QDir().mkpath(folder_);
    QSaveFile fresh(file());
    if (!fresh.open(QIODevice::WriteOnly)) return;
    fresh.write(content());
    if (!fresh.commit()) return;
    for (const QString& reader : readers) {
        const QString program = QStandardPaths::findExecutable(reader);
        if (!program.isEmpty()) QProcess::startDetached(program, {});
    }
}

std::vector<SessionHint> KeyGrant::hints() const {
    SessionHint hint{
        .topic = SessionHint::Topic::Text, .text = {}, .lines = {}, .actionLabel = {}, .action = {}};
    if (isWritten()) {
        hint.text = QCoreApplication::translate(
            "parlivo::KeyGrant",
            "Il permesso di incollare è dato: KDE lo applica entro qualche secondo. Se questa riga resta, esci dalla sessione e rientra.");
    } else {
        hint.text = QCoreApplication::translate(
            "parlivo::KeyGrant",
            "KDE non lascia ancora che Parlivo incolli: finché non lo consenti, il testo dettato va negli appunti.");
        hint.actionLabel = QCoreApplication::translate("parlivo::KeyGrant", "Consenti di incollare");
        hint.action = [grant = *this] { grant.write(); };
    }
    return {hint};
}

}  // namespace parlivo::kde
