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

/// The same for all dictations of a process, of which one is under way at a time: who looks for left marks
/// may meet it in the moment between its creation and its lock.
const QString& ownName() {
    static const QString name = QStringLiteral(".parlivo-%1.%2").arg(freshUuid(), extension);
    return name;
}

}  // namespace

DictationMark::DictationMark()
    : path_(folder().filePath(ownName())), file_(createLockedFile(path_, ownerOnlyMode)) {}

DictationMark::~DictationMark() {
    QFile::remove(path_);
}

bool takeLeftMarks() {
    const QRegularExpression ours(QRegularExpression::anchoredPattern(
        QStringLiteral("\\.parlivo-%1\\.%2").arg(uuidPattern, extension)));
    const QDir temporary = folder();
    QStringList marks =
        temporary.entryList({QStringLiteral(".parlivo-*")}, QDir::Files | QDir::Hidden | QDir::NoSymLinks)
            .filter(ours);
    marks.removeAll(ownName());
    bool found = false;
    for (const QString& mark : marks) {
        // One that has gone meanwhile was not left: its dictation has come to its end.
        found |= removeUnlocked(temporary.filePath(mark));
    }
    return found;
}

}  // namespace parlivo
