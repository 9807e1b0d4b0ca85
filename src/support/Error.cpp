// SPDX-License-Identifier: MIT
#include "support/Error.h"

#include <QCoreApplication>

#include <cerrno>
#include <utility>

namespace parlivo {

namespace {

class Texts {
    Q_DECLARE_TR_FUNCTIONS(parlivo::Error)
};

/// The reasons that a user may meet. The system's own texts are in the language of its locale, or in English.
QString reason(int errnoValue) {
    switch (errnoValue) {
        case ENOSPC:
        case EDQUOT:
            return Texts::tr("spazio su disco esaurito");
        case EFBIG:
            return Texts::tr("file troppo grande per questo disco");
        case EACCES:
        case EPERM:
            return Texts::tr("permesso negato");
        case EROFS:
            return Texts::tr("disco di sola lettura");
        case ENOENT:
            return Texts::tr("la cartella o il file non esiste");
        case EEXIST:
            return Texts::tr("esiste già");
        case ENOTDIR:
            return Texts::tr("la posizione non è una cartella");
        case EISDIR:
            return Texts::tr("al suo posto c'è una cartella");
        case ENOTEMPTY:
            return Texts::tr("la cartella non è vuota");
        case ENAMETOOLONG:
            return Texts::tr("il nome è troppo lungo");
        case ELOOP:
            return Texts::tr("troppi collegamenti simbolici");
        case EIO:
            return Texts::tr("errore del disco");
        case EMFILE:
        case ENFILE:
            return Texts::tr("troppi file aperti");
        case ENOMEM:
            return Texts::tr("memoria esaurita");
        case EBUSY:
        case ETXTBSY:
            return Texts::tr("è in uso");
        default:
            return Texts::tr("errore di sistema %1").arg(errnoValue);
    }
}

QString reason(QFileDevice::FileError error) {
    switch (error) {
        case QFileDevice::PermissionsError:
            return Texts::tr("permesso negato");
        case QFileDevice::ResourceError:
            return Texts::tr("spazio su disco o memoria esauriti");
        case QFileDevice::OpenError:
            return Texts::tr("impossibile aprire il file");
        case QFileDevice::ReadError:
            return Texts::tr("errore di lettura");
        case QFileDevice::WriteError:
            return Texts::tr("errore di scrittura");
        case QFileDevice::RemoveError:
            return Texts::tr("impossibile eliminare il file");
        case QFileDevice::RenameError:
            return Texts::tr("impossibile rinominare il file");
        default:
            return Texts::tr("errore del file %1").arg(static_cast<int>(error));
    }
}

}  // namespace

const QString& Error::programDomain() {
    static const QString domain = QStringLiteral("Parlivo");
    return domain;
}

Error::Error(ErrorCode code, QString description)
    : Error(programDomain(), static_cast<int>(code), std::move(description)) {}

Error::Error(QString domain, int code, QString description)
    : domain_(std::move(domain)),
      code_(code),
      description_(std::move(description)),
      utf8_(description_.toUtf8()) {}

Error Error::system(int errnoValue, const QString& subject) {
    return {QStringLiteral("POSIX"), errnoValue, subject + QStringLiteral(": ") + reason(errnoValue)};
}

Error Error::file(const QFileDevice& file) {
    return {QStringLiteral("File"), file.error(),
            file.fileName() + QStringLiteral(": ") + reason(file.error())};
}

QString Error::meaning(int errnoValue) {
    return reason(errnoValue);
}

Error Error::withDetail(const QString& detail) const {
    Error detailed(*this);
    detailed.detail_ = detail;
    return detailed;
}

}  // namespace parlivo
