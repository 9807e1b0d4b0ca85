#include "support/Error.h"

#include <cstring>
#include <utility>

namespace parlivo {

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
    // strerrordesc_np would be cleaner, but only strerror is portable; its text is copied at once.
    const QString reason = QString::fromLocal8Bit(std::strerror(errnoValue));
    return {QStringLiteral("POSIX"), errnoValue, subject + QStringLiteral(": ") + reason};
}

bool Error::is(ErrorCode code) const {
    return domain_ == programDomain() && code_ == static_cast<int>(code);
}

}  // namespace parlivo
