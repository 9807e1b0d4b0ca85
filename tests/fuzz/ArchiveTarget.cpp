#include "FuzzTarget.h"
#include "update/ZipNames.h"

#include <filesystem>

namespace parlivo::fuzz {

namespace {

namespace fs = std::filesystem;

/// Where the entry lands, as the file system sees it.
bool landsInside(const QByteArray& name) {
    const fs::path folder = "/a/b";
    const fs::path place =
        (folder / fs::path(name.toStdString())).lexically_normal().lexically_relative(folder);
    return !place.empty() && *place.begin() != "..";
}

}  // namespace

void attack(const QByteArray& input) {
    const QString archive = scratchPath(QStringLiteral("archive.zip"));
    writeFile(archive, input);
    const auto names = zipNames(archive);
    if (!names) return;
    for (const QByteArray& name : *names) {
        expect(input.contains(name), "a name stands in the archive");
        // The system's names end at the first NUL, whatever comes after it.
        expect(!staysInFolder(name) || name.contains('\0') || landsInside(name),
               "what stays in the folder stays there");
    }
}

}  // namespace parlivo::fuzz
