#include "support/Error.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace parlivo {

namespace {

/// What users meet is told in their language; the rest as the system says it.
QString reason(int errnoValue) {
    switch (errnoValue) {
        case ENOSPC:
        case EDQUOT:
            return QStringLiteral("spazio su disco esaurito");
        case EFBIG:
            return QStringLiteral("file troppo grande per questo disco");
        case EACCES:
        case EPERM:
            return QStringLiteral("permesso negato");
        case EROFS:
            return QStringLiteral("disco di sola lettura");
        case ENOENT:
            return QStringLiteral("la cartella o il file non esiste");
        case ENOTDIR:
            return QStringLiteral("la posizione non è una cartella");
        case EISDIR:
            return QStringLiteral("al suo posto c'è una cartella");
        case EIO:
            return QStringLiteral("errore del disco");
        default:
            // strerrordesc_np would be cleaner, but only strerror is portable; its text is copied at once.
            return QString::fromLocal8Bit(std::strerror(errnoValue));
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

bool Error::is(ErrorCode code) const {
    return domain_ == programDomain() && code_ == static_cast<int>(code);
}

}  // namespace parlivo
