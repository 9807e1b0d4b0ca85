// SPDX-License-Identifier: MIT
#include "audio/StaleRecordings.h"

#include "platform/Platform.h"
#include "support/FileLock.h"
#include "support/Uuid.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace parlivo {

namespace {

/// The names of the recordings in a folder that have this extension.
QStringList recordings(const QDir& folder, const QString& extension) {
    const QRegularExpression ours(
        QRegularExpression::anchoredPattern(QStringLiteral("parlivo-%1\\.%2").arg(uuidPattern, extension)));
    return folder.entryList({QStringLiteral("parlivo-*.") + extension}, QDir::Files | QDir::NoSymLinks)
        .filter(ours);
}

}  // namespace

void removeStaleRecordings() {
    const QDir temporary(Platform::current().directories().temporary());
    for (const QString& capture : recordings(temporary, QStringLiteral("caf")))
        removeUnlocked(temporary.filePath(capture));
    for (const QString& wav : recordings(temporary, QStringLiteral("wav"))) {
        // While it is written its lock is the one on the capture file, which stays until the WAV has its
        // own.
        const QString capture = QFileInfo(wav).completeBaseName() + QStringLiteral(".caf");
        if (!temporary.exists(capture)) removeUnlocked(temporary.filePath(wav));
    }
}

}  // namespace parlivo
