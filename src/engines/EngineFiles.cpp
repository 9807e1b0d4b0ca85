// SPDX-License-Identifier: MIT
#include "engines/EngineFiles.h"

#include "support/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace parlivo {

void checkEngineFiles(const QString& program) {
    // The bundle has a link to the server, which finds its files beside itself.
    const QDir folder(QFileInfo(program).canonicalPath());
    const auto holds = [&folder](const QString& pattern) {
        return !folder.entryList({pattern}, QDir::Files).isEmpty();
    };
    if (!holds(QStringLiteral("libggml-base.so*")) || holds(QStringLiteral("libggml-cpu-*.so"))) return;
    throw Error(QStringLiteral("Engine"), 0,
                QCoreApplication::translate("parlivo::checkEngineFiles",
                                            "mancano i file libggml-cpu-*.so in %1: reinstalla Parlivo")
                    .arg(folder.path()));
}

}  // namespace parlivo
