// SPDX-License-Identifier: MIT
#include "support/OwnerOnly.h"

#include <QSaveFile>

namespace parlivo {

bool replaceOwnerOnlyFile(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.setPermissions(ownerOnly) &&
           file.write(content) == content.size() && file.commit();
}

}  // namespace parlivo
