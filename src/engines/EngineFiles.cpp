// SPDX-License-Identifier: MIT
#include "engines/EngineFiles.h"

#include "support/Error.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>

namespace parlivo {

namespace {

/// The bundle has a link to the server, which finds its files beside itself.
QDir folderOf(const QString& program) {
    return QDir(QFileInfo(program).canonicalPath());
}

bool lacksProcessorLibraries(const QDir& folder) {
    const auto holds = [&folder](const QString& pattern) {
        return !folder.entryList({pattern}, QDir::Files).isEmpty();
    };
    return holds(QStringLiteral("libggml-base.so*")) && !holds(QStringLiteral("libggml-cpu-*.so"));
}

/// Whether the file is shorter than it was made: its table of sections, which linkers put at its end, is not
/// all there. Offsets as in the ELF header of 64 bits (System V ABI, chapter 4). What has another form, such
/// as a script or another system's library, is taken for whole.
bool isCutOff(const QFileInfo& info) {
    constexpr qsizetype headerSize = 64;
    QFile file(info.filePath());
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray header = file.read(headerSize);
    const bool isElf = header.startsWith("\177ELF");
    if (header.size() < headerSize) return isElf || info.fileName().contains(QLatin1String(".so"));
    if (!isElf) return false;
    const auto table = qFromLittleEndian<quint64>(header.constData() + 40);
    const auto entrySize = qFromLittleEndian<quint16>(header.constData() + 58);
    const auto entries = qFromLittleEndian<quint16>(header.constData() + 60);
    const auto size = static_cast<quint64>(file.size());
    return table > size || quint64{entrySize} * entries > size - table;
}

/// nullopt if the program and the libraries beside it are whole.
std::optional<QFileInfo> cutOffFile(const QString& program) {
    QFileInfoList files = folderOf(program).entryInfoList({QStringLiteral("*.so*")}, QDir::Files, QDir::Name);
    files.prepend(QFileInfo(QFileInfo(program).canonicalFilePath()));
    const auto found = std::ranges::find_if(files, isCutOff);
    if (found == files.end()) return std::nullopt;
    return *found;
}

}  // namespace

void checkEngineFiles(const QString& program) {
    const QDir folder = folderOf(program);
    if (!lacksProcessorLibraries(folder)) return;
    throw Error(QStringLiteral("Engine"), 0,
                QCoreApplication::translate("parlivo::checkEngineFiles",
                                            "mancano i file libggml-cpu-*.so in %1: reinstalla Parlivo")
                    .arg(folder.path()));
}

std::optional<ModelCatalog::Fault> engineFault(const QString& program) {
    if (!QFileInfo(program).isFile()) return std::nullopt;
    const QString text =
        QCoreApplication::translate("parlivo::engineFault", "motore incompleto (%1): reinstalla Parlivo");
    const QDir folder = folderOf(program);
    if (lacksProcessorLibraries(folder)) {
        const QString missing = QStringLiteral("libggml-cpu-*.so");
        return ModelCatalog::Fault{text.arg(missing), text.arg(folder.filePath(missing))};
    }
    const auto file = cutOffFile(program);
    if (!file) return std::nullopt;
    return ModelCatalog::Fault{text.arg(file->fileName()), text.arg(file->filePath())};
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
