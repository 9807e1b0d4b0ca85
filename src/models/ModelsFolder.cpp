#include "models/ModelsFolder.h"

#include "support/Clock.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace parlivo::ModelsFolder {

namespace {

constexpr qint64 blockSize = 1 << 20;

const QString temporarySuffix = QStringLiteral(".parlivo-move");

/// Zero, or the errno value.
int renameTo(const QString& from, const QString& to) {
    const int result = std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
    return result == 0 ? 0 : errno;
}

bool copyBlocks(QFile& source, QFile& copy) {
    QByteArray block(blockSize, Qt::Uninitialized);
    while (!Clock::interrupted()) {
        const qint64 size = source.read(block.data(), block.size());
        if (size <= 0) return size == 0;
        if (copy.write(block.constData(), size) != size) return false;
    }
    return false;
}

/// A copy whose bytes are known to be on the disk.
bool copyDurably(const QString& from, const QString& to) {
    QFile source(from);
    QFile copy(to);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return false;
    if (!copy.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) return false;
    return copyBlocks(source, copy) && copy.size() == source.size() && fsync(copy.handle()) == 0;
}

void moveAcrossFileSystems(const QString& from, const QString& to) {
    const QString temporary = to + temporarySuffix;
    if (copyDurably(from, temporary) && renameTo(temporary, to) == 0) {
        QFile::remove(from);
    } else {
        QFile::remove(temporary);
    }
}

void moveOne(const QString& from, const QString& to) {
    const QFileInfo target(to);
    if (target.exists() || target.isSymLink()) return;
    if (renameTo(from, to) == EXDEV) moveAcrossFileSystems(from, to);
}

}  // namespace

void moveModels(const QString& from, const QString& to) {
    const QDir source(from);
    const QDir target(to);
    const auto everything = QDir::Files | QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QStringList names = source.entryList(everything, QDir::Name);
    for (const QString& name : names) {
        const QString extension = QFileInfo(name).suffix();
        if (extension != QStringLiteral("bin") && extension != QStringLiteral("gguf")) continue;
        moveOne(source.filePath(name), target.filePath(name));
    }
}

}  // namespace parlivo::ModelsFolder
