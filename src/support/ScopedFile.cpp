// SPDX-License-Identifier: MIT
#include "support/ScopedFile.h"

#include <QFile>

#include <utility>

namespace parlivo {

ScopedFile::ScopedFile(QString path) : path_(std::move(path)) {
    lock();
}

ScopedFile::~ScopedFile() {
    remove();
}

void ScopedFile::lock() {
    lock_ = FileLock::acquire(path_);
}

void ScopedFile::remove() {
    QFile::remove(path_);
    // The system keeps the contents as long as somebody has the file open.
    lock_.reset();
}

}  // namespace parlivo
