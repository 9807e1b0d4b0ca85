#include "update/UpdateInstaller.h"

#include "platform/Platform.h"
#include "support/Claim.h"
#include "support/Error.h"
#include "support/Uuid.h"
#include "update/ZipNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>

namespace parlivo {

namespace {

namespace fs = std::filesystem;

fs::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// A folder of our own among the temporary files, which is claimed by this object and goes with it.
class WorkingFolder {
  public:
    WorkingFolder()
        : path_(Platform::current().directories().temporary() + QStringLiteral("/parlivo-update-") +
                freshUuid()) {
        std::error_code error;
        fs::create_directories(nativePath(path_).parent_path(), error);
        claim_ = createClaimedFolder(path_);
        if (!claim_) throw Error::system(errno, path_);
    }
    ~WorkingFolder() {
        std::error_code ignored;
        fs::remove_all(nativePath(path_), ignored);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    QString path(const QString& name = {}) const { return name.isEmpty() ? path_ : path_ + u'/' + name; }

  private:
    const QString path_;
    std::optional<Claim> claim_;
};

void checkSize(const QString& archive, qint64 expectedSize) {
    std::error_code error;
    const auto size = fs::file_size(nativePath(archive), error);
    if (error) throw Error::system(error.value(), archive);
    if (static_cast<qint64>(size) != expectedSize) {
        throw Error(ErrorCode::UpdateCorrupted,
                    QStringLiteral("Aggiornamento corrotto (dimensione inattesa)"));
    }
}

QString takeArchive(const QString& archive, const WorkingFolder& folder) {
    QString taken = folder.path(QStringLiteral("update.zip"));
    QFile file(archive);
    if (!file.rename(taken)) throw Error(QStringLiteral("File"), file.error(), file.errorString());
    return taken;
}

void unpack(const QString& archive, const WorkingFolder& folder) {
    const Error failure(ErrorCode::UpdateExtractionFailed,
                        QStringLiteral("Estrazione aggiornamento fallita"));
    // Tools differ in what they make of a path that leads out: some quietly unpack it elsewhere. The names
    // that cannot be read are left to the tool.
    const auto names = zipNames(archive);
    if (names && !std::all_of(names->begin(), names->end(), staysInFolder)) throw Error(failure);
    if (Platform::current().bundleTools().unpack(archive, folder.path()) != BundleTools::Outcome::Done)
        throw Error(failure);
}

bool isInside(const fs::path& path, const fs::path& folder) {
    const fs::path relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

/// A link that leads to something else in its bundle, and does so wherever the bundle is.
bool isOwnLink(const fs::path& link, const fs::path& bundle) {
    std::error_code error;
    if (fs::read_symlink(link, error).is_absolute()) return false;
    const fs::path target = fs::canonical(link, error);
    return !error && isInside(target, bundle);
}

/// Whether no symbolic link leads out of the bundle: its place in the updated one would be filled from
/// anywhere.
bool isSelfContained(const QString& bundle) {
    std::error_code error;
    const fs::path folder = nativePath(QFileInfo(bundle).canonicalFilePath());
    for (auto entry = fs::recursive_directory_iterator(folder, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->is_symlink() && !isOwnLink(entry->path(), folder)) return false;
    }
    return !error;
}

QString executableOf(const QString& bundle) {
    return bundle + QStringLiteral("/Contents/MacOS/Parlivo");
}

QString findBundle(const WorkingFolder& folder) {
    QString bundle = folder.path(QStringLiteral("Parlivo.app"));
    const QFileInfo executable(executableOf(bundle));
    if (QFileInfo(bundle).isSymLink() || !executable.isFile() || !executable.isExecutable() ||
        !isSelfContained(bundle)) {
        throw Error(ErrorCode::UpdateBundleInvalid, QStringLiteral("Bundle aggiornamento non valido"));
    }
    return bundle;
}

void replaceRunningBundle(const QString& bundle) {
    const QString running = Platform::current().bundle().location();
    // A program that was put somewhere without its bundle has other people's files around it.
    const bool replaceable = QFileInfo::exists(executableOf(running));
    if (!replaceable ||
        Platform::current().bundleTools().mirror(bundle, running) != BundleTools::Outcome::Done) {
        throw Error(ErrorCode::UpdateReplacementFailed, QStringLiteral("Sostituzione app fallita"));
    }
}

}  // namespace

void installUpdate(const QString& archive, qint64 expectedSize) {
    checkSize(archive, expectedSize);
    const WorkingFolder folder;
    unpack(takeArchive(archive, folder), folder);
    replaceRunningBundle(findBundle(folder));
}

void removeUpdateLeftovers() {
    const QRegularExpression ours(
        QRegularExpression::anchoredPattern(QStringLiteral("parlivo-update-%1(\\.zip)?").arg(uuidPattern)));
    const QDir temporary(Platform::current().directories().temporary());
    const QStringList names = temporary.entryList({QStringLiteral("parlivo-update-*")},
                                                  QDir::Files | QDir::Dirs | QDir::NoSymLinks);
    for (const QString& name : names.filter(ours)) removeUnclaimed(temporary.filePath(name));
}

}  // namespace parlivo
