// SPDX-License-Identifier: MIT
#include "platform/linux/sway/BindingRecord.h"

#include "platform/linux/base/XdgDirectories.h"

#include <QFile>
#include <QSaveFile>

#include <utility>

namespace parlivo::sway {

namespace {

/// Empty where the session has no folder.
QString recordFile() {
    const QString folder = XdgDirectories::runtime();
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/Parlivo.sway");
}

}  // namespace

BindingRecord::BindingRecord(QString socketPath) : socketPath_(std::move(socketPath)), file_(recordFile()) {}

QList<QByteArray> BindingRecord::chords() const {
    QFile file(file_);
    if (file_.isEmpty() || !file.open(QIODevice::ReadOnly)) return {};
    QList<QByteArray> lines = file.readAll().split('\n');
    if (lines.takeFirst() != QFile::encodeName(socketPath_)) return {};
    lines.removeAll(QByteArray());
    return lines;
}

void BindingRecord::write(const QList<QByteArray>& chords) const {
    if (file_.isEmpty()) return;
    if (chords.isEmpty()) {
        QFile::remove(file_);
        return;
    }
    QSaveFile file(file_);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(QFile::encodeName(socketPath_) + '\n' + chords.join('\n') + '\n');
    file.commit();
}

}  // namespace parlivo::sway
