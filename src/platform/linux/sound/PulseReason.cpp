// SPDX-License-Identifier: MIT
#include "platform/linux/sound/PulseReason.h"

#include <QCoreApplication>

#include <pulse/def.h>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::PulseReason)
};

}  // namespace

QString pulseReason(int code) {
    switch (code) {
        case PA_ERR_ACCESS:
        case PA_ERR_AUTHKEY:
            return Texts::tr("il server audio nega l'accesso");
        case PA_ERR_NOENTITY:
            return Texts::tr("dispositivo audio non trovato");
        case PA_ERR_CONNECTIONREFUSED:
            return Texts::tr("il server audio rifiuta la connessione");
        case PA_ERR_CONNECTIONTERMINATED:
        case PA_ERR_KILLED:
            return Texts::tr("il server audio ha chiuso la connessione");
        case PA_ERR_TIMEOUT:
            return Texts::tr("il server audio non risponde");
        case PA_ERR_BUSY:
            return Texts::tr("dispositivo audio occupato");
        case PA_ERR_IO:
            return Texts::tr("errore del dispositivo audio");
        case PA_ERR_VERSION:
        case PA_ERR_NOTSUPPORTED:
        case PA_ERR_NOTIMPLEMENTED:
            return Texts::tr("funzione non supportata dal server audio");
        default:
            return Texts::tr("errore del server audio %1").arg(code);
    }
}

}  // namespace parlivo
