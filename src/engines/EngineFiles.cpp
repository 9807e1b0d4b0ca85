// SPDX-License-Identifier: MIT
#include "engines/EngineFiles.h"

#include "support/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace parlivo {

namespace {

/// The bundle has a link to the server, which finds its files beside itself.
QDir folderOf(const QString& program) {
    return QDir(QFileInfo(program).canonicalPath());
}

}  // namespace

void checkEngineFiles(const QString& program) {
    const QDir folder = folderOf(program);
    const auto holds = [&folder](const QString& pattern) {
        return !folder.entryList({pattern}, QDir::Files).isEmpty();
    };
    if (!holds(QStringLiteral("libggml-base.so*")) || holds(QStringLiteral("libggml-cpu-*.so"))) return;
    throw Error(QStringLiteral("Engine"), 0,
                QCoreApplication::translate("parlivo::checkEngineFiles",
                                            "mancano i file libggml-cpu-*.so in %1: reinstalla Parlivo")
                    .arg(folder.path()));
}

std::optional<QString> graphicsFile(const QString& program) {
    QString file = folderOf(program).filePath(QStringLiteral("vulkan/libggml-vulkan.so"));
    if (!QFileInfo(file).isFile()) return std::nullopt;
    return file;
}

QMap<QString, QString> withGraphics(const QString& file) {
    return {{QStringLiteral("GGML_BACKEND_PATH"), file}};
}

}  // namespace parlivo
