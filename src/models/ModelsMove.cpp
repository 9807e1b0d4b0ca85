// SPDX-License-Identifier: MIT
#include "models/ModelsMove.h"

#include "settings/Config.h"
#include "support/Clock.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>

#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace parlivo {

namespace {

constexpr qint64 blockSize = 1 << 20;

const QString temporarySuffix = QStringLiteral(".parlivo-move");

QString journalFile() {
    return Config::appSupportDir() + QStringLiteral("/models-move");
}

/// One line of the journal, whatever characters are in the text.
QByteArray lineOf(const QString& text) {
    return text.toUtf8().toPercentEncoding("/ ") + '\n';
}

QString textOf(const QByteArray& line) {
    return QString::fromUtf8(QByteArray::fromPercentEncoding(line));
}

bool exists(const QString& path) {
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}

/// Zero, or the errno value; never replaces what is there.
int hardLink(const QString& from, const QString& to) {
    return ::link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0 ? 0 : errno;
}

/// What cannot be renamed stays where it is.
void renameTo(const QString& from, const QString& to) {
    std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
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

/// Copies and flushes to the disk; false on any error.
bool copyDurably(const QString& from, const QString& to) {
    QFile source(from);
    QFile copy(to);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return false;
    if (!copy.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) return false;
    return copyBlocks(source, copy) && copy.size() == source.size() && fsync(copy.handle()) == 0;
}

void copyAcrossFileSystems(const QString& from, const QString& to) {
    const QString temporary = to + temporarySuffix;
    if (copyDurably(from, temporary)) {
        // A link does not replace a file that has appeared there meanwhile. Some file systems have none.
        const int refusal = hardLink(temporary, to);
        if (refusal != 0 && !exists(to)) renameTo(temporary, to);
    }
    QFile::remove(temporary);
}

/// Deletes `path` where `other` is the same file or a copy of it.
void removeDuplicate(const QString& path, const QString& other) {
    const QFileInfo file(path);
    const QFileInfo duplicate(other);
    if (exists(path) && exists(other) && file.size() == duplicate.size()) QFile::remove(path);
}

void commitFiles(const QStringList& names, const QString& from, const QString& to) {
    for (const QString& name : names) removeDuplicate(QDir(from).filePath(name), QDir(to).filePath(name));
}

void rollback(const QStringList& names, const QString& from, const QString& to) {
    for (const QString& name : names) {
        const QString here = QDir(from).filePath(name);
        const QString there = QDir(to).filePath(name);
        QFile::remove(there + temporarySuffix);
        removeDuplicate(there, here);
        // The file system has no hard links, so the file was renamed.
        if (!exists(here) && exists(there)) renameTo(there, here);
    }
}

}  // namespace

ModelsMove::ModelsMove(const QString& from, const QString& to)
    : from_(from), to_(to), journal_(journalFile()) {
    if (!journal_.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) return;
    lock_ = FileLock::acquire(journal_.fileName());
    journal_.write(lineOf(from_) + lineOf(to_));
}

ModelsMove::~ModelsMove() {
    if (!committed_) rollback(staged_, from_, to_);
    journal_.remove();
}

void ModelsMove::stage() {
    const auto everything = QDir::Files | QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QStringList names = QDir(from_).entryList(everything, QDir::Name);
    for (const QString& name : names) {
        const QString extension = QFileInfo(name).suffix();
        if (extension == QStringLiteral("bin") || extension == QStringLiteral("gguf")) stageOne(name);
    }
}

void ModelsMove::stageOne(const QString& name) {
    const QString from = QDir(from_).filePath(name);
    const QString to = QDir(to_).filePath(name);
    if (exists(to)) return;
    // Written first: a file that is in the journal and in the new folder is then known to be ours.
    staged_.append(name);
    journal_.write(lineOf(name));
    const int refusal = hardLink(from, to);
    if (refusal == EXDEV) {
        copyAcrossFileSystems(from, to);
    } else if (refusal != 0 && !exists(to)) {
        renameTo(from, to);
    }
}

void ModelsMove::commit() {
    committed_ = true;
    commitFiles(staged_, from_, to_);
}

void ModelsMove::recover() {
    QFile journal(journalFile());
    if (!journal.exists() || isLocked(journal.fileName()) || !journal.open(QIODevice::ReadOnly)) return;
    QByteArrayList lines = journal.readAll().split('\n');
    // What follows the last line end was not written completely, so its file was not staged.
    lines.removeLast();
    if (lines.size() > 2) {
        const QString from = textOf(lines.takeFirst());
        const QString to = textOf(lines.takeFirst());
        QStringList names;
        for (const QByteArray& line : lines) names.append(textOf(line));
        const bool adopted = QDir::cleanPath(Config::modelsDir()) == QDir::cleanPath(to);
        (adopted ? commitFiles : rollback)(names, from, to);
    }
    journal.remove();
}

}  // namespace parlivo
