// SPDX-License-Identifier: MIT
#include "update/UpdateInstaller.h"

#include "platform/Platform.h"
#include "settings/Config.h"
#include "support/Error.h"
#include "support/FileLock.h"
#include "support/Uuid.h"
#include "update/Versions.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <filesystem>
#include <optional>

namespace parlivo {

namespace {

namespace fs = std::filesystem;

fs::path nativePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// Where a new version is unpacked for it to replace the running one.
QString stagingPlace() {
    Platform& platform = Platform::current();
    return platform.bundleTools()
        .stagingPlace(platform.bundle().location())
        .value_or(platform.directories().temporary());
}

/// A folder of our own, which is locked by this object and goes with it. Hidden, since it may lie among the
/// user's programs.
class WorkingFolder {
  public:
    WorkingFolder() : path_(stagingPlace() + QStringLiteral("/.parlivo-update-") + freshUuid()) {
        std::error_code error;
        fs::create_directories(nativePath(path_).parent_path(), error);
        lock_ = createLockedFolder(path_);
        if (!lock_) throw Error::system(errno, path_);
    }
    ~WorkingFolder() {
        std::error_code ignored;
        if (!kept_) fs::remove_all(nativePath(path_), ignored);
    }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

    const QString& path() const { return path_; }
    /// Leaves the folder to whoever has locked it besides, and to the next start.
    void keep() { kept_ = true; }

  private:
    const QString path_;
    std::optional<FileLock> lock_;
    bool kept_ = false;
};

/// What all regular files in a folder hold together, in bytes.
qint64 contentSize(const QString& folder) {
    qint64 sum = 0;
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) sum += files.nextFileInfo().size();
    return sum;
}

/// More than this no version of the program has grown by: an archive that holds more is meant to fill the
/// disk.
qint64 largestNewBundle() {
    constexpr qint64 growth = 4;
    constexpr qint64 spare = qint64{64} << 20;
    return growth * contentSize(Platform::current().bundle().location()) + spare;
}

void unpack(const QString& archive, const WorkingFolder& folder) {
    if (Platform::current().bundleTools().unpack(archive, folder.path(), largestNewBundle()) !=
        BundleTools::Outcome::Done) {
        throw Error(
            ErrorCode::UpdateExtractionFailed,
            QCoreApplication::translate("parlivo::UpdateInstaller", "Estrazione aggiornamento fallita"));
    }
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
/// anywhere. A folder that cannot be searched may hide one.
bool isSelfContained(const QString& bundle) {
    std::error_code error;
    const fs::path folder = nativePath(QFileInfo(bundle).canonicalFilePath());
    for (auto entry = fs::recursive_directory_iterator(folder, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const auto status = entry->symlink_status(error);
        if (error || (fs::is_symlink(status) && !isOwnLink(entry->path(), folder))) return false;
    }
    return !error;
}

QString executableOf(const QString& bundle) {
    return bundle + QStringLiteral("/Contents/MacOS/Parlivo");
}

bool holdsOnly(const QString& folder, const QString& name) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot) ==
           QStringList(name);
}

Error invalidBundle() {
    return {ErrorCode::UpdateBundleInvalid,
            QCoreApplication::translate("parlivo::UpdateInstaller", "Bundle aggiornamento non valido")};
}

QString findBundle(const WorkingFolder& folder) {
    const QString name = QStringLiteral("Parlivo.app");
    QString bundle = folder.path() + u'/' + name;
    const QFileInfo executable(executableOf(bundle));
    if (!holdsOnly(folder.path(), name) || QFileInfo(bundle).isSymLink() || !executable.isFile() ||
        !executable.isExecutable() || !isSelfContained(bundle)) {
        throw invalidBundle();
    }
    return bundle;
}

/// An old archive under a new name, or the site's word for a version that it is not, is refused.
void checkVersion(const QString& bundle, const QString& expected) {
    const auto version = Platform::current().bundleTools().shortVersion(bundle);
    if (version != expected || !isNewer(expected, Config::appVersion())) throw invalidBundle();
}

void replaceRunningBundle(const QString& bundle, WorkingFolder& folder) {
    const QString running = Platform::current().bundle().location();
    // A program that was put somewhere without its bundle has other people's files around it.
    auto outcome = BundleTools::Replacement::Failed;
    if (QFileInfo::exists(executableOf(running)))
        outcome = Platform::current().bundleTools().replace(bundle, running);
    if (outcome == BundleTools::Replacement::Failed)
        throw Error(ErrorCode::UpdateReplacementFailed,
                    QCoreApplication::translate("parlivo::UpdateInstaller", "Sostituzione app fallita"));
    if (outcome == BundleTools::Replacement::GoesOn) folder.keep();
}

/// The new version's notes, on the disk before it is in its place: however this program ends from then on,
/// the new one shows them. An installation that fails leaves what was stored before.
class StoredNotes {
  public:
    explicit StoredNotes(const QString& changelog) : before_(Config::get(Settings::pendingChangelog)) {
        Config::set(Settings::pendingChangelog, changelog);
        Config::flush();
    }
    ~StoredNotes() {
        if (kept_) return;
        before_ ? Config::set(Settings::pendingChangelog, *before_)
                : Config::remove(Settings::pendingChangelog);
        Config::flush();
    }
    StoredNotes(const StoredNotes&) = delete;
    StoredNotes& operator=(const StoredNotes&) = delete;

    void keep() { kept_ = true; }

  private:
    const std::optional<QString> before_;
    bool kept_ = false;
};

}  // namespace

void installUpdate(const QString& archive, const FeedEntry& entry, const std::optional<UpdateKey>& key) {
    checkArchive(archive, entry, key);
    WorkingFolder folder;
    unpack(archive, folder);
    const QString bundle = findBundle(folder);
    checkVersion(bundle, entry.version);
    StoredNotes notes(entry.changelog);
    replaceRunningBundle(bundle, folder);
    notes.keep();
}

void removeStaleUpdates() {
    const QRegularExpression ours(QRegularExpression::anchoredPattern(
        QStringLiteral("\\.?parlivo-update-%1(\\.zip)?").arg(uuidPattern)));
    for (const QString& place : {Platform::current().directories().temporary(), stagingPlace()}) {
        const QDir folder(place);
        const QStringList names =
            folder.entryList({QStringLiteral("parlivo-update-*"), QStringLiteral(".parlivo-update-*")},
                             QDir::Files | QDir::Dirs | QDir::NoSymLinks | QDir::Hidden);
        for (const QString& name : names.filter(ours)) removeUnlocked(folder.filePath(name));
    }
}

}  // namespace parlivo
