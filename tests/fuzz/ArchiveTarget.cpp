// SPDX-License-Identifier: MIT
#include "FuzzTarget.h"
#include "platform/linux/base/ZipExtraction.h"

#include <sys/stat.h>

#include <filesystem>

namespace parlivo::fuzz {

namespace {

namespace fs = std::filesystem;

constexpr qint64 limit = 1 << 16;  // bytes

bool isPlain(const fs::path& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) return false;
    const unsigned mode = status.st_mode & 07777U;
    if (S_ISREG(status.st_mode)) return mode == 0644 || mode == 0755;
    return S_ISLNK(status.st_mode) || (S_ISDIR(status.st_mode) && mode == 0755);
}

/// What a refused archive leaves behind may be half-finished; what was unpacked may not.
void checkFolder(const fs::path& folder, bool unpacked) {
    qint64 sum = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        expect(!unpacked || isPlain(entry.path()),
               "there are only files, folders and links that can be used");
        if (entry.symlink_status().type() == fs::file_type::regular)
            sum += static_cast<qint64>(entry.file_size());
    }
    expect(sum <= limit, "there is no more than the limit allows");
}

}  // namespace

void attack(const QByteArray& input) {
    const fs::path place = scratchPath(QStringLiteral("place")).toStdString();
    const fs::path folder = place / "deep" / "folder";
    fs::create_directories(folder);
    const QString archive = QString::fromStdString((place / "archive.zip").string());
    writeFile(archive, input);
    checkFolder(folder, extractZip(archive, QString::fromStdString(folder.string()), limit));
    expect(fs::remove_all(folder) > 0, "all of it can be removed");
    expect(fs::remove(place / "deep") && fs::remove(place / "archive.zip") && fs::is_empty(place),
           "nothing is left outside the folder");
    expect(readFile(QStringLiteral("/out")).isEmpty(), "nothing is left at the top of the file system");
}

}  // namespace parlivo::fuzz
