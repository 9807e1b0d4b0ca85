// SPDX-License-Identifier: MIT
#include "platform/linux/base/BundleReplacement.h"

#include "platform/linux/base/InheritedEnvironment.h"
#include "support/Clock.h"
#include "support/Error.h"
#include "support/UniqueFd.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <thread>
#include <vector>

namespace parlivo {

namespace {

namespace fs = std::filesystem;

/// Where rsync keeps what has arrived until all has (--delay-updates).
constexpr const char* delayedFolder = ".~tmp~";

UniqueFd openFolder(const QString& path) {
    return UniqueFd(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// What a tool starts with: a session of its own, no input or output, no signal blocked, and one descriptor
/// of ours besides.
class SpawnSettings {
  public:
    explicit SpawnSettings(int inherited) {
        posix_spawn_file_actions_init(&actions_);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&actions_, standard, "/dev/null", O_RDWR, 0);
        // Onto itself: that takes close-on-exec off it, in the child only.
        posix_spawn_file_actions_adddup2(&actions_, inherited, inherited);
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

  private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

std::vector<char*> pointersTo(std::vector<QByteArray>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (QByteArray& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Not by ChildProcess, whose children end with this program.
pid_t spawn(std::vector<QByteArray> words, int inherited) {
    std::vector<QByteArray> variables;
    for (const QString& variable : inheritedEnvironment().toStringList())
        variables.push_back(variable.toLocal8Bit());
    const SpawnSettings settings(inherited);
    pid_t child = -1;
    const int failure = posix_spawn(&child, words[0].constData(), settings.actions(), settings.attributes(),
                                    pointersTo(words).data(), pointersTo(variables).data());
    if (failure != 0) throw Error::system(failure, QFile::decodeName(words[0]));
    return child;
}

/// The child's status (wait(2)); nullopt if it still runs at the end of the time that the program's end
/// leaves it.
std::optional<int> waitFor(pid_t child) {
    constexpr std::chrono::milliseconds interval{20};
    std::optional<Clock::Deadline> ending;
    while (true) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) return status;
        if (Clock::interrupted() && !ending) ending.emplace(copyTimeout);
        if (ending && ending->passed()) return std::nullopt;
        std::this_thread::sleep_for(interval);
    }
}

/// What a copy that failed has left in the folder.
void removeDelayed(const QString& folder) {
    std::vector<fs::path> found;
    std::error_code ignored;
    for (auto entry = fs::recursive_directory_iterator(QFile::encodeName(folder).toStdString(), ignored);
         !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
        if (entry->path().filename() == delayedFolder) found.push_back(entry->path());
    }
    for (const fs::path& path : found) fs::remove_all(path, ignored);
}

}  // namespace

bool exchangeFolders(const QString& first, const QString& second) {
    const QByteArray from = QFile::encodeName(first);
    const QByteArray to = QFile::encodeName(second);
    const UniqueFd opened = openFolder(first);
    if (!opened || syncfs(opened.get()) != 0) return false;
    return renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE) == 0;
}

BundleTools::Replacement copyOver(const QString& rsync, const QString& source, const QString& destination) {
    const UniqueFd holder = openFolder(QFileInfo(source).path());
    if (!holder) throw Error::system(errno, source);
    // Shared with the child: the lock lasts until both have closed it.
    flock(holder.get(), LOCK_SH);
    // By contents, because by default a changed file of the same size and second would be left out.
    const pid_t child =
        spawn({QFile::encodeName(rsync), "-a", "--delete", "--checksum", "--delay-updates", "--delete-after",
               QFile::encodeName(source) + '/', QFile::encodeName(destination) + '/'},
              holder.get());
    const auto status = waitFor(child);
    if (!status) return BundleTools::Replacement::GoesOn;
    if (WIFEXITED(*status) && WEXITSTATUS(*status) == 0) return BundleTools::Replacement::Done;
    removeDelayed(destination);
    return BundleTools::Replacement::Failed;
}

}  // namespace parlivo
