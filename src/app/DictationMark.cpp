// SPDX-License-Identifier: MIT
#include "app/DictationMark.h"

#include "platform/Platform.h"
#include "support/FileLock.h"
#include "support/OwnerOnly.h"
#include "support/Uuid.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace parlivo {

namespace {

const QString extension = QStringLiteral("dictation");

QDir folder() {
    return {Platform::current().directories().temporary()};
}

}  // namespace

DictationMark::DictationMark()
    : path_(folder().filePath(QStringLiteral(".parlivo-%1.%2").arg(freshUuid(), extension))),
      file_(createLockedFile(path_, ownerOnlyMode)) {}

DictationMark::~DictationMark() {
    QFile::remove(path_);
}

bool takeLeftMarks() {
    const QRegularExpression ours(QRegularExpression::anchoredPattern(
        QStringLiteral("\\.parlivo-%1\\.%2").arg(uuidPattern, extension)));
    const QDir temporary = folder();
    const QStringList marks =
        temporary.entryList({QStringLiteral(".parlivo-*")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks)
            .filter(ours);
    bool found = false;
    for (const QString& mark : marks) {
        removeUnlocked(temporary.filePath(mark));
        found |= !temporary.exists(mark);
    }
    return found;
}

}  // namespace parlivo
