// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace parlivo::fuzz {

void expect(bool holds, const char* claim) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

QString scratchPath(const QString& name) {
    static const QTemporaryDir folder;
    return folder.filePath(name);
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    expect(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size(),
           "there is room for the input");
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace parlivo::fuzz

int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t count) {
    // A copy on the heap, just as long: reading beyond it is seen.
    parlivo::fuzz::attack({reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(count)});
    return 0;
}
